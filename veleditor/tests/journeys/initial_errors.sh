#!/bin/sh
# A file with errors opens after a warning and with a list of the errors, which can be
# written to a file.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
FLOW: Analysis
  Title = Without kinds
  DOMAIN: Duct
    Location = B1
  END
END
FILE
open_editor 'Command File Validation Errors'
press Return
await 'Command File Errors'
writes_messages 'Command File Errors' '/FLOW:Analysis/DOMAIN:Duct: required parameter "Kind" is missing [missing-parameter]
'
press alt+o
await "$file"
press ctrl+q
ends_well
is_untouched
