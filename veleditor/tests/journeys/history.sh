#!/bin/sh
# A version that a save has replaced is restored from the history, which is undone,
# redone and saved.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

# The only version is selected.
press ctrl+h
await 'History'
press_button alt+r
press Escape
await "$file - Modified"
press ctrl+z
await "$file"
press ctrl+y
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = By hand/Title = First run/'

# The newest version is now the one that the last save has replaced.
press ctrl+h
await 'History'
press Home
press_button alt+r
press Escape
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'
press ctrl+q
ends_well
