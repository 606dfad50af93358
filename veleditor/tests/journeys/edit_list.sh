#!/bin/sh
# A double click opens the list of allowed values; the user chooses one. Escape changes
# nothing.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
select_row 'Kind = Inlet'
double_click_row
await 'Edit Parameter'
press alt+Down Down Down Return
press Escape
await "$file"

double_click_row
await 'Edit Parameter'
press alt+Down Down Return
press alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Kind = Inlet/Kind = Outlet/'
press ctrl+q
ends_well
