#!/bin/sh
# At twice the scale the screen has half as much room: the window and its frame are
# still within the screen.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

QT_SCALE_FACTOR=2
export QT_SCALE_FACTOR
use duct.vel
open_editor "$file"
window=$(xdotool getwindowfocus)

# Prints the left, upper, right and lower edge of the window with its frame.
edges() {
    { xwininfo -id "$window" && xprop -id "$window" _NET_FRAME_EXTENTS; } | awk '
        /Absolute upper-left X/ { x = $NF }
        /Absolute upper-left Y/ { y = $NF }
        /Width:/ { w = $NF }
        /Height:/ { h = $NF }
        /_NET_FRAME_EXTENTS/ { gsub(/,/, ""); l = $(NF-3); r = $(NF-2); t = $(NF-1); b = $NF }
        END { print x - l, y - t, x + w + r, y + h + b }'
}
display_settle
# shellcheck disable=SC2046 # four numbers
set -- $(edges)
if [ "$1" -lt 0 ] || [ "$2" -lt 0 ] || [ "$3" -gt 1000 ] || [ "$4" -gt 760 ]; then
    fail "the window is at $*"
fi
[ $(($3 - $1)) -ge 900 ] || fail "the window is smaller than it could be: $*"
press ctrl+q
ends_well
