#!/bin/sh
# One journey through the real program in a real window, by keys and mouse: it
# opens a file, opens branches, changes a value, saves, and is closed; then again
# without saving. Run by CTest; needs VEL_BUILD_DIR and VEL_SOURCE_DIR and the
# environment of the editor.
set -eu
. "$VEL_SOURCE_DIR/tools/display.sh"

fail() {
    printf 'journey: %s\n' "$*" >&2
    xdotool search --onlyvisible --name . getwindowname %@ >&2 2>/dev/null || true
    exit 1
}

# until_true SECONDS WHAT COMMAND...
until_true() {
    left=$(($1 * 10)) what=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        left=$((left - 1))
        [ "$left" -gt 0 ] || fail "waited in vain until $what"
        sleep 0.1
    done
}

has_window() { [ -n "$(xdotool search --onlyvisible --name "$1" 2>/dev/null)" ]; }
has_no_window() { ! has_window "$1"; }
has_focus() { [ "$(xdotool getwindowfocus getwindowname 2>/dev/null)" = "$1" ]; }
has_ended() { ! kill -0 "$display_program" 2>/dev/null; }

press() { xdotool key --delay 80 "$@"; }

# start TITLE: the editor on the file, its window in front.
start() {
    display_open "$VEL_BUILD_DIR/bin/veleditor" "$file"
    until_true 30 "the window shows $1" has_focus "$1"
    # Keys that come before the first picture would be lost.
    sleep 0.5
}

# The program ends by itself, and says that all is well.
ends_well() {
    until_true 10 "the program has ended" has_ended
    wait "$display_program" || fail "the program ended with status $?"
    [ ! -s "$display_dir/program.log" ] || fail "it said: $(cat "$display_dir/program.log")"
}

display_start 1000x760
export XDG_RUNTIME_DIR="$display_dir" # the toolkit complains without one
file=$display_dir/duct.vel
cp -- "$VEL_SOURCE_DIR/veleditor/tests/data/duct.vel" "$file"
cp -- "$file" "$display_dir/before.vel"

# Open and expand: the second object, then down to the value in its first row.
start "$file"
press Home Down Down Right Down

# Edit.
press ctrl+e
until_true 10 "the value is asked for" has_focus "Edit Parameter"
press ctrl+a
xdotool type --delay 40 'By hand'
press alt+o
until_true 10 "the change is marked" has_focus "$file - Modified"
cmp -s "$file" "$display_dir/before.vel" || fail "the file changed before it was saved"

# Save.
press ctrl+s
until_true 10 "the file is saved" has_focus "$file"
cmp -s "$file.bak" "$display_dir/before.vel" || fail "the backup is not the former file"
sed 's/Title = First run/Title = By hand/' "$display_dir/before.vel" >"$display_dir/expected.vel"
diff -u "$display_dir/expected.vel" "$file" >&2 || fail "the file is not what was edited"

# Close: nothing is asked.
press ctrl+q
ends_well

# Again, to look at what was saved: the right button opens the whole object, so
# that the last row is its innermost value, a list.
start "$file"
xdotool mousemove --window "$(xdotool getwindowfocus)" 120 127 click 3
press End ctrl+e
until_true 10 "the list is shown" has_focus "Edit Parameter"
press Down alt+o
until_true 10 "the change is marked" has_focus "$file - Modified"

# Close: the user goes on working, then leaves without saving.
press ctrl+q
until_true 10 "the changes are asked about" has_focus "Unsaved Changes"
press Escape alt+c
until_true 10 "the window is back" has_focus "$file - Modified"
press ctrl+q
until_true 10 "the changes are asked about again" has_focus "Unsaved Changes"
press alt+q
ends_well
diff -u "$display_dir/expected.vel" "$file" >&2 || fail "the file changed without being saved"

display_stop
