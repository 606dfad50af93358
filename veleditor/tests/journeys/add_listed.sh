#!/bin/sh
# Adds a parameter to an object whose rules name the allowed ones. The list offers
# those that the object does not have. The selected row is a parameter of the object.
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

# Reference Pressure comes first, then Reviewer. A value is required.
press Down Tab
press alt+o
await 'Missing Parameter Value'
press Return
await 'Add Parameter'
write 'seen'
press alt+o
await "$file - Modified"

# Typing replaces the first name.
press ctrl+a
await 'Add Parameter'
write 'Trace Level'
press Tab
write 2
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/Location/a\    Reviewer = seen\n    Trace Level = 2'
press ctrl+q
ends_well
