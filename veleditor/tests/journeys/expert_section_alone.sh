#!/bin/sh
# Without a flow object, the section is added with one. The title does not show that as
# a change, but it is saved.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
SEALED: Box
END
FILE
open_editor "$file"
press ctrl+p ctrl+p
await 'Add Expert Parameter Section'
press Return
await "$file"
press ctrl+s
display_until 10 "the file is saved" test -e "$file.bak"
press ctrl+q
ends_well
is_saved '1i\FLOW: Analysis\n  EXPERT PARAMETERS:\n  END\nEND'
