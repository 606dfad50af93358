#!/bin/sh
# The list of changes: one is reverted by key, then all others; the list follows the
# window.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
select_row 'Location = B1, B2'
press ctrl+d
await 'Deleting Parameter'
press Return
await "$file - Modified"

# What is in an object comes before the siblings of the object, so the location is first.
press ctrl+shift+h
await 'Changes'
press Home Return Escape
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

# The reverted deletion is a step of its own.
press ctrl+z
await "$file - Modified"
press ctrl+shift+h
await 'Changes'
press_button alt+a
press Escape
await "$file - Modified"
press ctrl+s
await "$file"
is_saved
press ctrl+q
ends_well
