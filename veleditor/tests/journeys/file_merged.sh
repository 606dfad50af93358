#!/bin/sh
# The user and another program both change the file: the window merges the changes, and
# asks about the value that both have changed.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'

picture
rewrite 's/Title = First run/Title = Theirs/;s/Location = B1, B2/Location = B3/'
cp -- "$file" "$former"
await_change
press alt+m
await Merge
press Escape
await "$file - Modified"
press alt+m
await Merge
press alt+k
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = Theirs/Title = By hand/'

# Now the other side; then nothing differs from the disk.
press ctrl+z
await "$file - Modified"
picture
rewrite 's/Title = By hand/Title = Theirs/;s/Location = B3/Location = B4/'
await_change
press alt+m
await Merge
press alt+t
await "$file"
press ctrl+q
ends_well
