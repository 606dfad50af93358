# A display of our own, for programs that have none: sourced by shell scripts.
#
#   display_start 1000x760      a virtual screen of that size, with a window manager
#   display_open PROGRAM ARG..  starts the program and waits until its window stands
#   display_picture FILE.png    the whole screen, once nothing moves on it any more
#   display_close               ends the program
#   display_stop                ends all of it; also done when the script ends
#
# The program's process is $display_program, its output $display_dir/program.log.
# A failure prints a message and ends the script with status 1.

display_server='' display_manager='' display_program='' display_dir=''

display_fail() {
    printf 'display: %s\n' "$*" >&2
    [ ! -s "$display_dir/program.log" ] || tail -n 20 -- "$display_dir/program.log" >&2
    exit 1
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

display_start() {
    display_dir=$(mktemp -d)
    trap display_stop EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    # The server chooses a free number and writes it when it is ready.
    Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp \
        3>"$display_dir/number" >"$display_dir/server.log" 2>&1 &
    display_server=$!
    display_tries=0
    until [ -s "$display_dir/number" ]; do
        kill -0 "$display_server" 2>/dev/null || display_fail "Xvfb does not start"
        display_tries=$((display_tries + 1))
        [ "$display_tries" -le 300 ] || display_fail "Xvfb does not answer"
        sleep 0.1
    done
    DISPLAY=:$(cat "$display_dir/number")
    QT_QPA_PLATFORM=xcb
    export DISPLAY QT_QPA_PLATFORM
    if command -v openbox >/dev/null 2>&1; then
        openbox --sm-disable >"$display_dir/manager.log" 2>&1 &
        display_manager=$!
        # Windows that come before the manager would stay without frame and focus.
        display_tries=0
        until xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; do
            display_tries=$((display_tries + 1))
            [ "$display_tries" -le 100 ] || break
            sleep 0.1
        done
    fi
}

display_open() {
    "$@" >"$display_dir/program.log" 2>&1 &
    display_program=$!
    display_tries=0
    until xdotool search --onlyvisible --pid "$display_program" >/dev/null 2>&1; do
        kill -0 "$display_program" 2>/dev/null || display_fail "$1 ended without showing a window"
        display_tries=$((display_tries + 1))
        [ "$display_tries" -le 600 ] || display_fail "$1 shows no window"
        sleep 0.1
    done
}

# display_grab FILE.png [WINDOW]: what is there at this moment.
display_grab() {
    import -silent -window "${2:-root}" "$1" || display_fail "cannot take a picture"
}

# The processor time that the program has used, where the system tells it.
display_time_used() {
    sed 's/.*) //' "/proc/$display_program/stat" 2>/dev/null | cut -d ' ' -f 12,13
}

# display_settle [WINDOW]: waits until the program has stopped working and two
# looks in a row show the same.
display_settle() {
    display_tries=0 display_ticks=''
    display_grab "$display_dir/before.png" "${1:-root}"
    while [ "$display_tries" -lt 60 ]; do
        display_tries=$((display_tries + 1)) display_ticks_before=$display_ticks
        sleep 0.5
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
