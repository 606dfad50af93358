#!/bin/sh
# Items for experts and data of the rule libraries are shown only if their variables
# are set, to any value.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

finds() {
    press Home ctrl+f
    await Find
    press ctrl+a
    write "$1"
    press Return Escape
    await "$file"
}

finds_not() {
    press Home ctrl+f
    await Find
    press ctrl+a
    write "$1"
    press Return
    await 'Not Found'
    press Return
    await Find
    press Escape
    await "$file"
}

use duct.vel
open_editor "$file"
finds_not 'Trace Level'
finds_not 'Density'
press ctrl+q
ends_well

export ZOT5_VEL_EXPERT=
open_editor "$file"
finds_not 'Density'
finds 'Trace Level'
press ctrl+e
await 'Edit Parameter'
enter_value 3
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Trace Level = 2/Trace Level = 3/'
press ctrl+q
ends_well

unset ZOT5_VEL_EXPERT
export VELEDITOR_SHOW_LIBRARY=
open_editor "$file"
finds 'Density'
press ctrl+q
ends_well
is_untouched
