#!/bin/sh
# A parameter is deleted only after a question.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'Title = First run'
press ctrl+d
await 'Deleting Parameter'
press alt+c
await "$file"

# Escape is not an answer.
press ctrl+d
await 'Deleting Parameter'
press Escape alt+d
await "$file - Modified"

# Nothing is selected then; pressing the same keys again deletes nothing.
press ctrl+d
await 'Deleting Parameter'
press Return
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/Title = First run/d'

# A parameter that cannot be changed cannot be deleted either.
select_row 'Version = 2.1'
press ctrl+d
await 'Deleting Parameter'
press Return
await "$file"
press ctrl+q
ends_well
is_untouched
