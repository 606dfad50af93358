#!/bin/sh
# A file whose folder has gone cannot be saved: the user is told, and the changes
# stay until it can. Who saves on the way out has been told, too.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'Title = First run'
press ctrl+e
await 'Edit Parameter'
enter_value 'By hand'
await "$file - Modified"
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
