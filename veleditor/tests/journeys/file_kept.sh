#!/bin/sh
# A save replaces what another program wrote: the history keeps that, and the window
# says so.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
picture
rewrite 's/Title = First run/Title = Theirs/'
cp -- "$file" "$display_dir/theirs.vel"
await_change
press ctrl+s
await "$file"
"$VEL_BUILD_DIR/bin/veltool" history "$file" --show 1 >"$display_dir/kept.vel"
same "$display_dir/theirs.vel" "$display_dir/kept.vel"

# The notice stays until it is closed.
picture
press alt+c
await_change
press ctrl+q
ends_well
