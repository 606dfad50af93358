#!/bin/sh
# The user types another value and saves; the title shows the change, and the former
# file is kept. Ctrl+Return presses Ok, and a line break at the end is removed.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
is_untouched

press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

press ctrl+e
await 'Edit Parameter'
press ctrl+a
write 'By key'
press Return ctrl+Return
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = By hand/Title = By key/'

# There are no unsaved changes, so no question.
press ctrl+q
ends_well
