#!/bin/sh
# Makes the pictures of the documents anew: the real editor, with a real set-up
# open, on a virtual display. Called by ./dev screenshots from the root of the
# tree, with build/ built.
set -eu
# shellcheck source=tools/display.sh
. ./tools/display.sh

images=${1:-docs/images}
mkdir -p "$images"
display_start 1100x800
work=$display_dir

# Keys go to the window that has the focus.
press() {
    xdotool key --delay 60 "$@"
}

write() {
    xdotool type --delay 30 "$1"
}

# picture NAME: the active window with its frame, cut out of the whole screen.
picture() {
    display_picture "$work/screen.png"
    window=$(xdotool getactivewindow) || display_fail "no window has the focus for $1"
    # The frame adds so much: left, right, top, bottom.
    area=$({
        xwininfo -id "$window"
        xprop -id "$window" _NET_FRAME_EXTENTS | tr , ' '
    } | awk '
        /Absolute upper-left X:/ { x = $NF }
        /Absolute upper-left Y:/ { y = $NF }
        /Width:/ { width = $NF }
        /Height:/ { height = $NF }
        /_NET_FRAME_EXTENTS.*=/ { left = $(NF - 3); right = $(NF - 2); top = $(NF - 1); bottom = $NF }
        END { print width + left + right "x" height + top + bottom "+" x - left "+" y - top }')
    convert "$work/screen.png" -crop "$area" +repage -strip \
        -define png:exclude-chunks=date,time "$images/$1.png"
    printf '%s\n' "$images/$1.png"
}

# open_example FILE: in a folder of its own, so that its name is short in the
# title, and nothing changes the example.
open_example() {
    cp -- "examples/$1" "$work/$1"
    launcher=$(pwd -P)/veledit
    cd -- "$work"
    display_open "$launcher" "$1"
    cd -- "$OLDPWD"
    display_settle
}

# All of the last object, FLOW, and in it one of the boundaries, with rows
# before and behind it on the screen.
open_example duct.vel
press Home End asterisk ctrl+f
write 'BOUNDARY : Room A'
picture find
press Return Escape
press --repeat 13 Down
press --repeat 12 Up
picture editor
press ctrl+e
picture edit-parameter
display_close

open_example mistakes.vel
picture findings-question
press Return
picture findings

display_stop
