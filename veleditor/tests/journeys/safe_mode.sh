#!/bin/sh
# In safe mode only values that a running solver reads again can be changed, and the
# title says so.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use duct.vel
open_editor "$file - Safe Mode" -safe "$file"
select_row 'Title = First run'
press ctrl+e
await 'Cannot edit Title'
press Return
await "$file - Safe Mode"
select_row 'Run Mode = Steady'
press ctrl+e
await 'Edit Parameter'
enter_value 'Transient'
await "$file - Safe Mode - Modified"
press ctrl+s
await "$file - Safe Mode"
is_saved 's/Run Mode = Steady/Run Mode = Transient/'
press ctrl+q
ends_well
