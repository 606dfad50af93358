#!/bin/sh
# Gives the three answers to the question before a window with unsaved changes closes.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

change_title() {
    select_row 'Title = First run'
    press ctrl+e
    await 'Edit Parameter'
    enter_value 'By hand'
    await "$file - Modified"
}

use duct.vel
open_editor "$file"
change_title
press ctrl+q
await 'Unsaved Changes'
press alt+c
await "$file - Modified"

# The button in the frame asks, too; Escape is not an answer.
press alt+F4
await 'Unsaved Changes'
press Escape alt+q
ends_well
is_untouched

open_editor "$file"
change_title
press ctrl+q
await 'Unsaved Changes'
press Return
ends_well
is_saved 's/Title = First run/Title = By hand/'
