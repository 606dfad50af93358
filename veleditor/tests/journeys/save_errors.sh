#!/bin/sh
# Data with errors is saved only if the user agrees.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'Kind = Fluid'
press ctrl+d
await 'Deleting Parameter'
press alt+d
await "$file - Modified"
press ctrl+s
await 'Command File Errors'
press alt+n
await "$file - Modified"
is_untouched

# The same when the user exits: the window stays open.
press ctrl+q
await 'Unsaved Changes'
press alt+s
await 'Command File Errors'
press Escape
await "$file - Modified"
is_untouched

press ctrl+s
await 'Command File Errors'
press alt+y
await "$file"
is_saved '/Kind = Fluid/d'
press ctrl+q
ends_well
