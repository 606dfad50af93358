#!/bin/sh
# The search looks in closed branches and ignores case. It goes from match to match and
# starts again at the top after the last one.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file"
press ctrl+f
await Find
write outlet
press Return Escape
await "$file"
press ctrl+e
await 'Edit Parameter'
press Down alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Kind = Outlet/Kind = Wall/'

# From the root there are three matches; the fourth step finds none, the fifth the
# first.
press Home ctrl+f
await Find
write KIND
press Return Escape
await "$file"
press ctrl+n ctrl+n ctrl+n
await 'Not Found'
press Return
await "$file"
press ctrl+n ctrl+e
await 'Edit Parameter'
press Down alt+o
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Kind = Fluid/Kind = Solid/'

# A single character is never found.
press ctrl+f
await Find
write K
press Return
await 'Not Found'
press Return
await Find
press Escape
await "$file"
press ctrl+q
ends_well
