#!/bin/sh
# Makes the pictures of the documents: the real editor shows a real set-up on a
# virtual display. Makes them again for a screen of twice the density and in dark
# colours; look at those for text that is cut off or cannot be read. ./dev
# screenshots calls this script from the root of the tree, after it has built
# build/. VEL_BUILD_DIR names another build.
#
#   tools/screenshots.sh [VARIANT...]     plain double dark dark-double (default: all)
#
# The plain pictures go to docs/images, the others to screenshots/ of the build.
set -eu
# shellcheck source=tools/display.sh
. ./tools/display.sh

root=$(pwd -P)
VEL_BUILD_DIR=${VEL_BUILD_DIR:-$root/build}
LC_ALL=C.UTF-8
export VEL_BUILD_DIR LC_ALL

# --- Taking pictures -----------------------------------------------------------

# The area of a window with its frame, as WIDTHxHEIGHT+X+Y.
window_area() {
    {
        xwininfo -id "$1"
        xprop -id "$1" _NET_FRAME_EXTENTS | tr , ' '
    } | awk '
        /Absolute upper-left X:/ { x = $NF }
        /Absolute upper-left Y:/ { y = $NF }
        /Width:/ { width = $NF }
        /Height:/ { height = $NF }
        /_NET_FRAME_EXTENTS.*=/ { left = $(NF - 3); right = $(NF - 2); top = $(NF - 1); bottom = $NF }
        END { print width + left + right "x" height + top + bottom "+" x - left "+" y - top }'
}

# save_area NAME AREA [PART]: this area of the screen; or a part of it, from its upper
# left, as 50%x50%. Few colours are enough, and keep the files small.
save_area() {
    display_picture "$display_dir/screen.png"
    convert "$display_dir/screen.png" -crop "$2" +repage \
        -crop "${3:-100%x100%}+0+0" +repage -strip +dither -colors 255 \
        -define png:exclude-chunks=date,time "PNG8:$images/$1.png"
    printf '%s\n' "$images/$1.png"
}

# picture NAME [PART]: the window that has the focus, with what covers it.
picture() {
    window=$(xdotool getactivewindow) || display_fail "no window has the keys for $1"
    save_area "$1" "$(window_area "$window")" "${2:-100%x100%}"
}

# before_tree NAME TITLE: the main window, of that title, with all objects open,
# and before it the list that has the focus.
before_tree() {
    list=$(xdotool getactivewindow)
    window=$(xdotool search --onlyvisible --name "^$2\$" | head -n 1)
    area=$(window_area "$window")
    xdotool windowactivate --sync "$window"
    display_await "$2"
    display_press ctrl+plus
    x=${area#*+}
    xdotool windowmove --sync "$list" $((${x%+*} + 190 * scale)) $((${x#*+} + 297 * scale))
    xdotool windowactivate --sync "$list"
    save_area "$1" "$area"
}

# --- Using the editor -------------------------------------------------------------

# open_example FILE TITLE: opens a copy of the example. The copy has a folder of
# its own: its name is short in the title, and nothing changes the example. TITLE
# is that of the first window.
open_example() {
    mkdir -p "$display_dir/case"
    cp -- "$root/examples/$1" "$display_dir/case/$1"
    open_case "$1" "$2"
}

open_case() {
    cd -- "$display_dir/case"
    display_open "$root/veledit" "$1"
    cd -- "$root"
    display_await "$2"
    display_settle
}

# find TEXT TITLE: selects the first row that contains the text. TITLE is the main
# window's, which has the focus afterwards.
find() {
    display_press Home ctrl+f
    display_await Find
    display_press ctrl+a
    display_write "$1"
    display_press Return Escape
    display_await "$2"
}

has_two_windows() {
    [ "$(xdotool search --onlyvisible --pid "$display_program" | wc -l)" -eq 2 ]
}

# opened NAME KEYS TITLE: presses the keys, waits for the window, takes its picture.
opened() {
    display_press "$2"
    display_await "$3"
    picture "$1"
}

# closed TITLE: Escape closes the window; then the one of that title has the focus.
closed() {
    display_press Escape
    display_await "$1"
}

# menu LETTER NAME: takes a picture of an open menu and its surroundings.
menu() {
    display_press "alt+$1"
    picture "menu-$2" 56%x44%
    display_press Escape Escape
}

# --- The pictures -------------------------------------------------------------------

# A set-up without findings; nothing is changed.
sound_file() {
    open_example duct.vel duct.vel

    menu f file
    menu e edit
    menu h help

    # The whole flow object and a boundary in it, with room for the menu below.
    display_press Home End asterisk ctrl+f
    display_await Find
    display_write 'BOUNDARY : Room A'
    picture find
    display_press Return Escape
    display_await duct.vel
    display_press --repeat 19 Down
    display_press --repeat 18 Up
    picture editor
    display_press Menu
    picture row-menu
    display_press Escape
    xdotool mousemove --window "$(xdotool getactivewindow)" $((450 * scale)) $((300 * scale))
    display_until 10 "a tool tip is shown" has_two_windows
    picture tool-tip
    xdotool mousemove 0 0
    display_press shift+F1
    display_until 10 "an explanation is shown" has_two_windows
    picture whats-this
    display_press Escape

    opened edit-parameter ctrl+e 'Edit Parameter'
    closed duct.vel
    opened add-listed ctrl+a 'Add Parameter'
    closed duct.vel
    opened delete ctrl+d 'Deleting Parameter'
    display_press alt+c
    display_await duct.vel
    opened validated ctrl+v 'Validation Successful'
    closed duct.vel

    find 'EXPRESSIONS :' duct.vel
    display_press ctrl+a
    display_await 'Add Parameter'
    display_write 'Night Share'
    display_press Tab
    display_write '0.3 * Air Change'
    picture add-free
    closed duct.vel
    find 'Remark' duct.vel
    opened edit-text ctrl+e 'Edit Parameter'
    closed duct.vel
    display_press Home
    opened add-none ctrl+a 'Add Parameter'
    closed duct.vel
    display_press ctrl+f
    display_await Find
    display_press ctrl+a
    display_write 'no such words'
    display_press Return
    display_await 'Not Found'
    picture not-found
    closed Find
    closed duct.vel
    display_close
}

expert_section() {
    open_example heat-exchanger.vel heat-exchanger.vel
    changed='heat-exchanger.vel - Modified'
    display_press ctrl+p
    display_await "$changed"
    find 'EXPERT PARAMETERS' "$changed"
    display_press ctrl+a
    display_await 'Add Parameter'
    display_press ctrl+a
    display_write 'Random Seed'
    display_press Tab
    display_write 17
    display_press alt+o
    display_await "$changed"
    picture expert-section
    opened expert-twice ctrl+p 'Add Expert Parameter Section'
    closed "$changed"
    opened close-question ctrl+q 'Unsaved Changes'
    display_close
}

findings() {
    open_example mistakes.vel 'Command File Validation Errors'
    picture findings-question
    display_press Return
    display_await 'Command File Errors'
    picture findings
    closed mistakes.vel
    opened save-errors ctrl+s 'Command File Errors'
    display_close
}

tutorial() {
    mkdir -p "$display_dir/case"
    awk '/^```vel / { number++ } /^```/ { inside = number == 1 && /vel/; next } inside' \
        docs/tutorial.md >"$display_dir/case/tee.vel"
    open_case tee.vel 'Command File Validation Errors'
    display_press Return
    display_await 'Command File Errors'
    before_tree tutorial-findings tee.vel
    closed tee.vel
    find Inlte tee.vel
    opened tutorial-list ctrl+e 'Edit Parameter'
    display_write Inlet
    display_press alt+o
    display_await 'tee.vel - Modified'
    find '2 [m]' 'tee.vel - Modified'
    display_press ctrl+e
    display_await 'Edit Parameter'
    display_press ctrl+a
    display_write '2 [m s^-1]'
    picture tutorial-text
    display_press alt+o
    display_await 'tee.vel - Modified'
    opened tutorial-validated ctrl+v 'Validation Successful'
    closed 'tee.vel - Modified'
    display_close
}

# A value is changed and a parameter deleted; nothing is saved.
unsaved_changes() {
    open_example duct.vel duct.vel
    find '101325 [Pa]' duct.vel
    display_press ctrl+e
    display_await 'Edit Parameter'
    display_press ctrl+a
    display_write '100 [kPa]'
    display_press alt+o
    display_await 'duct.vel - Modified'
    find 'Building 14' 'duct.vel - Modified'
    display_press ctrl+d
    display_await 'Deleting Parameter'
    display_press Return
    display_await 'duct.vel - Modified'
    opened changes ctrl+shift+h Changes
    display_close
}

old_file() {
    open_example old-version.vel 'Command File Updated.'
    picture upgrade-question
    display_press alt+y
    display_await 'VEL Upgrade Messages'
    picture upgrade
    display_close
}

help_viewer() {
    open_example duct.vel duct.vel
    find 'BOUNDARY : Room A' duct.vel
    display_press Down F1
    display_await 'BOUNDARY - Help'
    picture help
    display_close
}

# --- The variants -----------------------------------------------------------------

# Dark colours come from the settings of the desktop. This is the only form of them
# that the toolkit reads without a plug-in.
dark_desktop() {
    XDG_CONFIG_HOME=$display_dir/config
    QT_QPA_PLATFORMTHEME=kde KDE_SESSION_VERSION=5
    export XDG_CONFIG_HOME QT_QPA_PLATFORMTHEME KDE_SESSION_VERSION
    mkdir -p "$XDG_CONFIG_HOME"
    cat >"$XDG_CONFIG_HOME/kdeglobals" <<'END'
[KDE]
widgetStyle=Fusion

[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252

[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundLink=29,153,243
ForegroundVisited=155,89,182

[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252

[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252

[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
END
}

# variant NAME: runs in a process of its own, with which settings and display end.
variant() (
    images=$VEL_BUILD_DIR/screenshots/$1
    screen=1100x800 scale=1
    case $1 in
    plain) images=docs/images ;;
    esac
    case $1 in
    *double)
        screen=2200x1600 scale=2
        QT_SCALE_FACTOR=2
        export QT_SCALE_FACTOR
        ;;
    esac
    mkdir -p "$images"
    display_start "$screen"
    XDG_STATE_HOME=$display_dir/state
    export XDG_STATE_HOME
    case $1 in
    dark*) dark_desktop ;;
    esac
    sound_file
    expert_section
    findings
    tutorial
    unsaved_changes
    old_file
    help_viewer
    display_stop
)

[ $# -gt 0 ] || set -- plain double dark dark-double
for name; do
    variant "$name"
done
