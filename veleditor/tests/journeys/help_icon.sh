#!/bin/sh
# The window of the help viewer has the icon of the program.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

# With and without what the launcher sets.
for root in "$ZOT5ROOT" ''; do
    ZOT5ROOT=$root
    display_open "$VEL_BUILD_DIR/bin/velhelp" 'Tutorials'
    window=$(xdotool search --onlyvisible --pid "$display_program" | tail -n 1)
    xprop -id "$window" _NET_WM_ICON | grep -q 'Icon (48 x 48)' || fail "there is no icon"
    display_close
done
