#!/bin/sh
# Changes are undone and redone by key, before and after a save; the title says
# whether the window differs from the disk, and the changed row is selected.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
change_value 'Title = First run' 'By hand'
press ctrl+z
await "$file"
press ctrl+shift+z
await "$file - Modified"

# The deleted parameter comes back, selected: its value can be typed over.
select_row 'Location = B1, B2'
press ctrl+d
await 'Deleting Parameter'
press Return
await "$file - Modified"
press ctrl+z ctrl+e
await 'Edit Parameter'
press Escape
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

# The save is in the middle of what can be undone.
press ctrl+z
await "$file - Modified"
press ctrl+y
await "$file"
press ctrl+y
await "$file - Modified"
press ctrl+s
await "$file"
is_saved '/Location = B1, B2/d'

# In a dialog the key is not the window's.
press ctrl+z ctrl+z
await "$file - Modified"
press ctrl+e
await 'Edit Parameter'
press ctrl+z ctrl+z Escape
await "$file - Modified"
press ctrl+s
await "$file"
sed 's/Title = By hand/Title = First run/;/^    Kind = Fluid/a\    Location = B1, B2' "$former" >"$display_dir/both.vel"
same "$display_dir/both.vel" "$file"
press ctrl+q
ends_well
