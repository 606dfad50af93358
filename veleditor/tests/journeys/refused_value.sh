#!/bin/sh
# If the rules refuse a value, a list says why, and the former value is restored in the
# row and in the data; the mark of a change stays. Then the dialog opens again with
# the typed text.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'Reference Pressure = 1'
press ctrl+e
await 'Edit Parameter'
enter_value '27x'
await 'Command File Errors'
press alt+o
await 'Edit Parameter'
press Escape
await "$file - Modified"
press ctrl+s
await "$file"
is_saved

# Text typed at the end of the field shows that the row has its former value.
press ctrl+e
await 'Edit Parameter'
press End
write 5
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Reference Pressure = 1$/Reference Pressure = 15/'

# The refused text can be corrected.
press ctrl+e
await 'Edit Parameter'
enter_value '27x'
await 'Command File Errors'
press Return
await 'Edit Parameter'
press ctrl+End BackSpace
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Reference Pressure = 15$/Reference Pressure = 27/'
press ctrl+q
ends_well
