#!/bin/sh
# Undo goes on after the file was closed and opened again: the former value comes back
# in its selected row, and the title says whether the window differs from the disk. A
# file that another program has changed in between has nothing to undo.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'
press ctrl+q
ends_well

open_editor "$file"
press ctrl+z
await "$file - Modified"
press ctrl+y
await "$file"

# The row is selected, and its dialog has the former value.
press ctrl+z
await "$file - Modified"
press ctrl+e
await 'Edit Parameter'
press ctrl+End
write ' again'
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = By hand/Title = First run again/'
press ctrl+z
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run again/Title = First run/'
press ctrl+q
ends_well

# What was undone can be redone the next time.
open_editor "$file"
press ctrl+y
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = First run again/'
press ctrl+q
ends_well

# Another program changes the file: there is nothing to undo, and no message.
sed 's/Title = First run again/Title = From outside/' "$former" >"$file"
cp -- "$file" "$former"
open_editor "$file"
press ctrl+z ctrl+y
change_value 'Title = From outside' 'By hand'
press ctrl+z ctrl+z
await "$file"
press ctrl+q
ends_well
is_untouched
