#!/bin/sh
# The expert section is added once, after everything else in the flow object; the
# second time a box says that it already exists.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
FLOW: Analysis
  Title = Plain
  DOMAIN: Duct
    Kind = Fluid
  END
END
FILE
open_editor "$file"
press ctrl+p
await "$file - Modified"
press ctrl+p
await 'Add Expert Parameter Section'
press Return
await "$file - Modified"

# Its row is below the domain's and accepts parameters.
press Home asterisk End ctrl+a
await 'Add Parameter'
write 'sweep count'
press Tab
write 4
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/Title/a\  EXPERT PARAMETERS:\n    sweep count = 4\n  END'

press ctrl+p
await 'Add Expert Parameter Section'
press Return
await "$file"
press ctrl+q
ends_well
