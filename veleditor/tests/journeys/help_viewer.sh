#!/bin/sh
# The help viewer alone: its window has the icon of the program and is within the
# screen, and a failed write does not end the viewer.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

# With and without the variables that the launcher sets.
for root in "$ZOT5ROOT" ''; do
    ZOT5ROOT=$root
    display_open "$VEL_BUILD_DIR/bin/velhelp" 'Tutorials'
    window=$(xdotool search --onlyvisible --pid "$display_program" | tail -n 1)
    xprop -id "$window" _NET_WM_ICON | grep -q 'Icon (48 x 48)' || fail "there is no icon"
    display_close
done

QT_SCALE_FACTOR=2
export QT_SCALE_FACTOR
display_open "$VEL_BUILD_DIR/bin/velhelp" 'Tutorials'
window=$(xdotool search --onlyvisible --pid "$display_program" | tail -n 1)
size=$(xwininfo -id "$window" | awk '/Width:|Height:/ { print $2 }' | tr '\n' ' ')
# shellcheck disable=SC2086 # two numbers
set -- $size
if [ "$1" -gt 1000 ] || [ "$2" -gt 760 ]; then
    fail "the window is larger than the screen: $size"
fi

# If it still runs, it ends with status 0 when the user closes it.
kill -s XFSZ "$display_program"
kill -s PIPE "$display_program"
xdotool windowactivate --sync "$window"
await 'Tutorials - Help'
# On a busy machine the window manager may miss a key just after the focus moved.
ends_on_key() {
    has_ended || press alt+F4
    has_ended
}
display_until 15 "the viewer has ended" ends_on_key
wait "$display_program" || fail "it ended with status $?"
display_program=''
