# Functions for all journeys. A journey is one task of a user in the real program with
# a real window, by keys and mouse, on its own display. A journey reads this file
# first; CTest sets VEL_SOURCE_DIR, VEL_BUILD_DIR and the environment of the editor.
# Journeys may run in parallel, as root or not, and without /proc, a message bus or a
# name for the computer.
#
#   use FILE            $file is a copy of a file of the tests' data, in $folder
#   use -               the same with the text on standard input
#   open_editor TITLE [ARG..]    starts the program with the arguments (else $file) and
#                       waits for the window of that title
#   press KEY..         presses keys such as "ctrl+s"
#   write TEXT          types a text
#   await TITLE         waits until the window of that title has the focus
#   select_row LINE     selects the row that shows this line of $file
#   double_click_row    double-clicks the selected row
#   picture             remembers what the screen shows
#   await_change        waits until it shows something else
#   rewrite SED         edits $file as another program does, in a new file of its name
#   press_button KEY    presses a button by its key, which acts a moment later
#   change_value LINE TEXT    gives the parameter of this line of $file another value
#   enter_value TEXT    answers the open dialog with this text and Ok
#   is_saved [SED]      checks that $file is the former one with this edit, and that
#                       its .bak is the former one
#   is_untouched        checks that $file has not changed and has no new .bak
#   same EXPECTED FILE  compares two files, and shows where they differ
#   writes_messages TITLE TEXT   the open dialog, of that title, writes exactly this
#                       text to a file
#   ends_well           waits for the program to end with status 0 and no output
#   ends_saying TEXT    the same with this on its standard error
#   break_rebuilds PATH gives the program a Perl side on which the first tree is built
#                       and the next one cannot be; PATH is an object of $file
#   ends_in_emergency   waits for the program to end for that reason
#
# A journey follows the program by the title of the focused window: it names the dialog
# or box, and shows whether there are unsaved changes. Every wait has a limit; after
# it the journey fails and says what it was waiting for.
set -eu
# shellcheck source=tools/display.sh
. "$VEL_SOURCE_DIR/tools/display.sh"

display_start 1000x760
folder=$display_dir/case
file=$folder/case.vel
former=$display_dir/former.vel
mkdir "$folder"

fail() { display_fail "$@"; }
press() { display_press "$@"; }
write() { display_write "$@"; }
await() { display_await "$@"; }

use() {
    if [ "$1" = - ]; then
        cat >"$file"
    else
        cp -- "$VEL_SOURCE_DIR/veleditor/tests/data/$1" "$file"
    fi
    cp -- "$file" "$former"
}

open_editor() {
    title=$1
    shift
    [ $# -gt 0 ] || set -- "$file"
    display_open "$VEL_SOURCE_DIR/veledit" "$@"
    await "$title"
}

# Below its root the tree shows one row for each line of a formatted file except END,
# in the same order; Trace Level is hidden as an expert item.
row_number() {
    sed -e 's/^ *//' -e '/^END$/d' -e '/^Trace Level/d' "$file" |
        grep -Fnx -m 1 -- "$1" | cut -d : -f 1
}

select_row() {
    row=$(row_number "$1")
    [ -n "$row" ] || fail "no line of the file is: $1"
    press Home asterisk
    press --repeat "$row" Down
}

# Prints the place of the selection on the screen; nothing else has this blue.
selection_place() {
    display_grab "$display_dir/look.png"
    convert "$display_dir/look.png" -fill black +opaque '#0000ff' -trim \
        -format '%w %h %X %Y\n' info: 2>/dev/null |
        awk '$1 > 10 && $2 > 5 { print $3 + 5, $4 + int($2 / 2); found = 1 } END { exit !found }'
}

double_click_row() {
    display_until 10 "a row is selected" selection_place
    # shellcheck disable=SC2046 # two numbers
    xdotool mousemove $(selection_place) click --repeat 2 --delay 50 1
}

picture() {
    display_settle
    display_grab "$display_dir/remembered.png"
}

looks_different() {
    display_grab "$display_dir/now.png"
    ! compare -metric AE "$display_dir/remembered.png" "$display_dir/now.png" null: >/dev/null 2>&1
}

await_change() {
    display_until 30 "the screen shows something else" looks_different
}

rewrite() {
    sed "$1" "$file" >"$folder/new"
    mv -- "$folder/new" "$file"
}

enter_value() {
    press ctrl+a
    write "$1"
    press alt+o
}

press_button() {
    press "$1"
    display_settle
}

change_value() {
    select_row "$1"
    press ctrl+e
    await 'Edit Parameter'
    enter_value "$2"
    await "$file - Modified"
}

same() {
    diff -u -- "$1" "$2" >&2 || fail "$2 is not what was expected"
}

is_saved() {
    same "$former" "$file.bak"
    sed "${1:-}" "$former" >"$display_dir/expected.vel"
    same "$display_dir/expected.vel" "$file"
    cp -- "$file" "$former"
    rm -- "$file.bak"
}

is_untouched() {
    same "$former" "$file"
    [ ! -e "$file.bak" ] || fail "there is a .bak file"
}

writes_messages() {
    printf '%s' "$2" >"$display_dir/expected.txt"
    press alt+w
    await 'Select File'
    write "$folder/messages.txt"
    press Return
    await "$1"
    display_until 10 "the messages are written" test -s "$folder/messages.txt"
    same "$display_dir/expected.txt" "$folder/messages.txt"
}

has_ended() { ! kill -0 "$display_program" 2>/dev/null; }

ends_saying() {
    display_until 15 "the program has ended" has_ended
    wait "$display_program" || fail "it ended with status $?"
    display_program=''
    printf '%s' "$1" >"$display_dir/words"
    same "$display_dir/words" "$display_dir/program.log"
}

ends_well() { ends_saying ''; }

# At the second query about the object, this Perl side deletes it.
break_rebuilds() {
    mkdir "$display_dir/perl"
    ln -s "$ZOT5_VEL_PARSER"/* "$display_dir/perl"
    rm "$display_dir/perl/API.pm"
    cat >"$display_dir/perl/API.pm" <<END
BEGIN { require "$ZOT5_VEL_PARSER/API.pm"; }
package API;
no warnings;
my \$asked = 0;
sub isItemExpert {
    my (\$self, \$path) = @_;
    \$self->{database}->deleteObj(\$path) if \$path eq '$1' && \$asked++;
    return 0;
}
1;
END
    ZOT5_VEL_PARSER=$display_dir/perl
    export ZOT5_VEL_PARSER
}

ends_in_emergency() {
    ends_saying "Error encountered:
getChildList : getChildList: unable to find the requested path
Attempting to save VEL to $file.emergency
"
}
