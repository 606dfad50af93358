#!/bin/sh
# A value is typed over, marked as a change, and saved; the former file is kept.
# Ctrl+Return presses Ok, and a line break at the end does no harm.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'Title = First run'
press ctrl+e
await 'Edit Parameter'
enter_value 'By hand'
await "$file - Modified"
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

# Nothing is left to ask about.
press ctrl+q
ends_well
