#!/bin/sh
# An old file is upgraded when it is opened. The user can look at the changes; they are
# saved only on request.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use old.vel

# Yes: the editor shows the messages, which can be written to a file.
open_editor 'Command File Updated.'
press alt+y
await 'VEL Upgrade Messages'
writes_messages 'VEL Upgrade Messages' 'The following changes were made:

/FLOW:Analysis/Mode: renamed to "Run Mode"
/LANGUAGE/Version: changed from 2.0 to 2.1'
press alt+o
await "$file - Modified"
press ctrl+q
await 'Unsaved Changes'
press alt+q
ends_well
is_untouched

# No, which Return presses. The rows show the new data.
open_editor 'Command File Updated.'
press Return
await "$file - Modified"
press ctrl+f
await Find
write 'Run Mode'
press Return Escape
await "$file - Modified"
press ctrl+e
await 'Edit Parameter'
enter_value 'Transient'
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Mode = Steady/Run Mode = Transient/; s/2.0/2.1/'
press ctrl+q
ends_well
