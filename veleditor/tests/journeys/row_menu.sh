#!/bin/sh
# The menu of the selected row, opened by the Menu key and Shift+F10, and its
# shortcuts: copies values and paths, closes and opens all branches.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

# paste_as_title: makes the copied text the value of the flow's title.
paste_as_title() {
    select_row "$1"
    press ctrl+e
    await 'Edit Parameter'
    press ctrl+a ctrl+v alt+o
    await "$file - Modified"
    press ctrl+s
    await "$file"
}

use duct.vel
open_editor "$file"
select_row 'Mass Flow Rate = 0.5'
press Menu v
paste_as_title 'Title = First run'
is_saved 's/Title = First run/Title = 0.5/'

select_row 'Mass Flow Rate = 0.5'
press shift+F10 c
paste_as_title 'Title = 0.5'
is_saved 's,Title = 0.5,Title = /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Mass Flow Rate,'

# With closed branches, the second row below the root is the flow object; with open
# ones it is the version, which cannot be changed.
press ctrl+minus Home Down Down ctrl+shift+c
paste_as_title 'Title = /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Mass Flow Rate'
is_saved 's,Title = .*,Title = /FLOW:Analysis,'
press ctrl+minus Home ctrl+plus Down Down
press Menu e
await 'Cannot edit Version'
press Return
await "$file"
press ctrl+q
ends_well
is_untouched
