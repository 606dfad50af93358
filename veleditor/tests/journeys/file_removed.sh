#!/bin/sh
# The file is removed, and later renamed, while it is open: the window says so and
# saves it again.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
picture
rm -- "$file"
await_change
press alt+s
display_until 30 "the file is there again" test -s "$file"
same "$former" "$file"

display_settle
picture
mv -- "$file" "$folder/other.vel"
await_change
press alt+s
display_until 30 "the file is there again" test -s "$file"
same "$former" "$file"
press ctrl+q
ends_well
