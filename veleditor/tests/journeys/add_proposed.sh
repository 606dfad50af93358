#!/bin/sh
# The dialog for a new parameter starts with a missing required one and the default of
# its rule. If the rules name the values, there is a list.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
PUMP: p
  Kind = Piston
  Speed = 50
END
FILE
open_editor 'Command File Validation Errors'
press Return
await 'Command File Errors'
press ctrl+Return
await "$file"
select_row 'PUMP: p'
press ctrl+a
await 'Add Parameter'
press Tab
write 3
press ctrl+Return
await "$file - Modified"

# Note and its default.
press ctrl+a
await 'Add Parameter'
press ctrl+Return
await "$file - Modified"

# Running is a logical; nothing is chosen at first.
press ctrl+a
await 'Add Parameter'
press alt+o
await 'Missing Parameter Value'
press Return
await 'Add Parameter'
press Down alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/Speed/a\  Stroke = 3\n  Note = none yet\n  Running = Yes'
press ctrl+q
ends_well
