#!/bin/sh
# If the folder of the file was removed, saving fails: a box says so, and the changes
# stay until they can be saved. Saving on exit shows the same box.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
mv -- "$folder" "$display_dir/away"
press ctrl+s
await 'Error Saving File'
press Return
await "$file - Modified"

mv -- "$display_dir/away" "$folder"
is_untouched
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

press ctrl+e
await 'Edit Parameter'
enter_value 'Again'
await "$file - Modified"
mv -- "$folder" "$display_dir/away"
press ctrl+q
await 'Unsaved Changes'
press alt+s
await 'Error Saving File'
press Return
ends_well
