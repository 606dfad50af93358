#!/bin/sh
# Another program changes the file: the window says so, reloads it by key, and the
# reload can be undone.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

has_undone() {
    press ctrl+z
    display_has_focus "$file - Modified"
}

use duct.vel
open_editor "$file"
picture
rewrite 's/Title = First run/Title = Theirs/'
cp -- "$file" "$former"
await_change
press alt+r
display_until 30 "the reload is undone" has_undone
press ctrl+y
await "$file"
press ctrl+s
await "$file"
display_until 30 "the file is saved" test -e "$file.bak"
is_saved ''

# A file with a mistake is refused, and nothing changes.
picture
rewrite 's/Title = Theirs/Title/'
await_change
picture
press alt+r
await_change
press ctrl+z
await "$file - Modified"
press ctrl+s
await "$file"
same "$VEL_SOURCE_DIR/veleditor/tests/data/duct.vel" "$file"
grep -q '^ *Title$' "$file.bak" || fail "the .bak is not what the other program wrote"
press ctrl+q
ends_well
