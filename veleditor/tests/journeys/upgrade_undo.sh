#!/bin/sh
# The notice about an upgrade shows its changes again and undoes them.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use old.vel

# After No: Undo leads to the data of the file, and can be redone and undone by keys.
open_editor 'Command File Updated.'
press Return
await "$file - Modified"
press alt+u
await "$file"
press ctrl+y
await "$file - Modified"
press ctrl+z
await "$file"
press ctrl+q
ends_well
is_untouched

# After Yes: Show opens the same dialog again, and the notice stays.
open_editor 'Command File Updated.'
press alt+y
await 'VEL Upgrade Messages'
press alt+o
await "$file - Modified"
press alt+s
await 'VEL Upgrade Messages'
writes_messages 'VEL Upgrade Messages' 'The following changes were made:

/FLOW:Analysis/Mode: renamed to "Run Mode"
/LANGUAGE/Version: changed from 2.0 to 2.1'
press alt+o
await "$file - Modified"
press alt+u
await "$file"
press ctrl+q
ends_well
is_untouched
