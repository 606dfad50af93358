#!/bin/sh
# The user validates the data before and after a mistake.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
press ctrl+v
await 'Validation Successful'
press Return
await "$file"
select_row 'Kind = Inlet'
press ctrl+d
await 'Deleting Parameter'
press Return
await "$file - Modified"
press ctrl+v
await 'Command File Errors'
writes_messages 'Command File Errors' '/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in: required parameter "Kind" is missing [missing-parameter]
'
press Escape
await "$file - Modified"
press ctrl+q
await 'Unsaved Changes'
press alt+q
ends_well
is_untouched
