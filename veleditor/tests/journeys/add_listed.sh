#!/bin/sh
# A parameter is added to an object whose rules name what it may hold: the list
# offers what is not there yet. The selected row is a parameter of the object.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
FLOW: Analysis
  DOMAIN: Duct
    Kind = Fluid
    Location = B1
  END
END
FILE
open_editor "$file"
select_row 'Kind = Fluid'
press ctrl+a
await 'Add Parameter'

# Reference Pressure comes first, then Remark. A value must be given.
press Down Tab
press alt+o
await 'Missing Parameter Value'
press Return
await 'Add Parameter'
write 'seen'
press alt+o
await "$file - Modified"

# What is typed replaces the first name.
press ctrl+a
await 'Add Parameter'
write 'Trace Level'
press Tab
write 2
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/Location/a\    Remark = seen\n    Trace Level = 2'
press ctrl+q
ends_well
