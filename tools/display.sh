# A virtual display for programs, where there is no real one. Shell scripts source
# this file.
#
#   display_start 1000x760      a virtual screen of that size, with a window manager
#   display_open PROGRAM ARG..  starts the program and waits until it shows a window
#   display_await TITLE         waits until the window of that title has the focus
#   display_press KEY..         presses keys, one after the other (ctrl+s)
#   display_write TEXT          types a text
#   display_picture FILE.png    the whole screen, once it no longer changes
#   display_close               ends the program
#   display_stop                ends everything; also runs when the script ends
#
# $display_program is the process of the program, $display_dir/program.log its
# output. $display_dir is a folder for the files of the script. Nothing waits for a
# fixed time: display_until checks ten times a second. A failure prints a message
# and ends the script with status 1. Everything works without /proc, a message bus
# and a host name.

display_server='' display_manager='' display_program='' display_dir=''

display_titles() {
    xdotool search --onlyvisible --name . getwindowname %@ 2>/dev/null | tr '\n' ';'
}

display_fail() {
    printf 'display: %s; visible: %s\n' "$*" "$(display_titles)" >&2
    [ ! -s "$display_dir/program.log" ] || tail -n 20 -- "$display_dir/program.log" >&2
    exit 1
}

# display_until SECONDS WHAT COMMAND...: waits until the command succeeds.
display_until() {
    display_tries=$(($1 * 10)) display_what=$2
    shift 2
    until "$@" >/dev/null; do
        display_tries=$((display_tries - 1))
        [ "$display_tries" -gt 0 ] || display_fail "waited too long until $display_what"
        sleep 0.1
    done
}

display_end() {
    kill "$1" 2>/dev/null || return 0
    wait "$1" 2>/dev/null || true
}

display_close() {
    [ -z "$display_program" ] || display_end "$display_program"
    display_program=''
}

display_stop() {
    display_close
    for display_process in $display_manager $display_server; do
        display_end "$display_process"
    done
    display_manager='' display_server=''
    [ -z "$display_dir" ] || rm -rf -- "$display_dir"
    display_dir=''
}

display_is_numbered() {
    kill -0 "$display_server" 2>/dev/null || display_fail "Xvfb does not start"
    [ -s "$display_dir/number" ]
}

display_is_managed() {
    kill -0 "$display_manager" 2>/dev/null || display_fail "openbox has ended"
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'
}

display_start() {
    display_dir=$(mktemp -d)
    trap display_stop EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    # The server chooses a free number and writes it when it is ready. -noreset: it
    # does not restart when the last client disconnects, which would end the others.
    # -r: keys do not repeat, even if a busy machine releases them late.
    Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp -noreset -r \
        3>"$display_dir/number" >"$display_dir/server.log" 2>&1 &
    display_server=$!
    display_until 30 "Xvfb answers" display_is_numbered
    DISPLAY=:$(cat "$display_dir/number")
    QT_QPA_PLATFORM=xcb
    XDG_RUNTIME_DIR=$display_dir       # the toolkit complains without one
    DBUS_SESSION_BUS_ADDRESS=disabled: # do not use the message bus of a desktop
    export DISPLAY QT_QPA_PLATFORM XDG_RUNTIME_DIR DBUS_SESSION_BUS_ADDRESS
    if command -v openbox >/dev/null 2>&1; then
        openbox --sm-disable >"$display_dir/manager.log" 2>&1 &
        display_manager=$!
        # Windows that open before the manager runs never get a frame or the focus.
        display_until 30 "the window manager is there" display_is_managed
    fi
}

display_has_window() {
    kill -0 "$display_program" 2>/dev/null || display_fail "it ended without showing a window"
    xdotool search --onlyvisible --pid "$display_program" 2>/dev/null
}

display_open() {
    "$@" >"$display_dir/program.log" 2>&1 &
    display_program=$!
    display_until 60 "$1 shows a window" display_has_window
}

display_has_focus() {
    [ "$(xdotool getwindowfocus getwindowname 2>/dev/null)" = "$1" ]
}

display_await() {
    display_until 30 "\"$1\" has the focus" display_has_focus "$1"
}

display_press() {
    xdotool key --delay 20 "$@"
}

display_write() {
    xdotool type --delay 20 -- "$1"
}

# display_grab FILE.png [WINDOW]: a picture at this moment.
display_grab() {
    import -silent -window "${2:-root}" "$1" || display_fail "cannot take a picture"
}

# The processor time of the program, if the system has /proc.
display_time_used() {
    sed 's/.*) //' "/proc/$display_program/stat" 2>/dev/null | cut -d ' ' -f 12,13
}

# display_settle [WINDOW]: waits until the program uses no processor time and two
# pictures in a row are the same.
display_settle() {
    display_tries=0 display_ticks=''
    display_grab "$display_dir/before.png" "${1:-root}"
    while [ "$display_tries" -lt 60 ]; do
        display_tries=$((display_tries + 1)) display_ticks_before=$display_ticks
        sleep 0.2
        display_ticks=$(display_time_used)
        display_grab "$display_dir/after.png" "${1:-root}"
        if [ "$display_ticks" = "$display_ticks_before" ] && compare -metric AE \
            "$display_dir/before.png" "$display_dir/after.png" null: >/dev/null 2>&1; then
            return 0
        fi
        mv -- "$display_dir/after.png" "$display_dir/before.png"
    done
}

display_picture() {
    display_settle root
    display_grab "$1" root
}
