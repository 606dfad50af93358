#!/bin/sh
# Changes are undone and redone by the buttons of the strip, and from its menu in a
# narrow window, which has no room for them.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

# look NAME: a picture of the row of the menu bar.
look() {
    display_settle
    # shellcheck disable=SC2046 # three numbers
    set -- "$1" $(xwininfo -id "$(xdotool getactivewindow)" | awk '
        /Absolute upper-left [XY]:/ || /Width:/ { print $NF }')
    left=$2 top=$3 width=$4
    display_grab "$display_dir/screen.png"
    convert "$display_dir/screen.png" -crop "${width}x35+$left+$top" +repage "$display_dir/$1.png"
}

# click_change ONE OTHER: clicks the middle of where two pictures differ.
click_change() {
    place=$(convert "$display_dir/$1.png" "$display_dir/$2.png" -compose difference -composite \
        -threshold 0 -trim -format '%w %h %X %Y' info: |
        awk '{ print int($3 + $1 / 2), int($4 + $2 / 2) }')
    # shellcheck disable=SC2086 # two numbers
    set -- $place
    xdotool mousemove $((left + $1)) $((top + $2)) click 1 mousemove $((left + 200)) $((top + 300))
}

use duct.vel
open_editor "$file"
look clean
change_value 'Title = First run' 'By hand'
look changed

# Undo is what can be pressed now, and then Redo.
click_change clean changed
await "$file"
look undone
click_change clean undone
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'

# In a narrow window only More is left.
xdotool getactivewindow windowsize --sync 300 200
look narrow
xdotool mousemove $((left + width - 25)) $((top + 12)) click 1
press u
await "$file - Modified"
press ctrl+y
await "$file"
press ctrl+q
ends_well
is_untouched
