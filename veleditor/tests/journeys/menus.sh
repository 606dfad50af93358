#!/bin/sh
# The menu entries can be used by their letters and with the mouse.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
press alt+f v
await 'Validation Successful'
press alt+o
await "$file"

select_row 'Title = First run'
press alt+e a
await 'Add Parameter'
press Escape
await "$file"
press alt+e d
await 'Deleting Parameter'
press alt+c
await "$file"
press alt+e p
await 'Add Expert Parameter Section'
press Return
await "$file"
press alt+e e
await 'Edit Parameter'
enter_value 'By hand'
await "$file - Modified"
press alt+e f
await Find
write outlet
press Return Escape
await "$file - Modified"
press alt+e n
await 'Not Found'
press Return
await "$file - Modified"
press alt+f s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

# File is the first menu of the bar, Exit its last entry.
xdotool mousemove --window "$(xdotool getwindowfocus)" 15 12 click 1
press Up Return
ends_well
