#!/bin/sh
# If nothing can be added, the dialog says so and changes nothing.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
SEALED: Box
END
FILE
open_editor "$file"
select_row 'SEALED: Box'
press ctrl+a
await 'Add Parameter'
press alt+o
await "$file"
press ctrl+q
ends_well
is_untouched
