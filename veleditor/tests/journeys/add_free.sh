#!/bin/sh
# Adds a parameter with a free name where the rules allow any. An invalid name is
# refused, and underscores become blanks.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'EXPERT PARAMETERS:'
press ctrl+a
await 'Add Parameter'
write 'sweep_count!'
press Tab
write 4
press alt+o
await 'Invalid Parameter Name'
press Return
await 'Add Parameter'
press End BackSpace
press alt+o
await 'Underscores replaced'
press Return
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/solver build/a\    sweep count = 4'
press ctrl+q
ends_well
