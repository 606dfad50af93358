#!/bin/sh
# A user who starts the editor from a desktop does not see a console. So a file that
# cannot be loaded is reported in a box, too, unless standard error is a terminal.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

words="File error encountered:
readTextFile: $folder/absent.vel: open failed: No such file or directory"
open_editor 'Command File Editor' "$folder/absent.vel"
press Return
ends_saying "$words
"

# The first build of the rows fails; there is nothing to save.
use duct.vel
break_rebuilds /FLOW:Analysis/DOMAIN:Duct
# shellcheck disable=SC2016 # a variable of Perl
sed -i 's/ && \$asked++//' "$display_dir/perl/API.pm"
open_editor 'Command File Editor'
press Escape
ends_saying "Error encountered:
getChildList : getChildList: unable to find the requested path
"

# script(1) makes a terminal.
terminal=$display_dir/terminal
SHELL=/bin/sh script -qec "'$VEL_SOURCE_DIR/veledit' '$folder/absent.vel'" "$terminal" \
    >"$display_dir/words" </dev/null &
display_program=$!
display_until 30 "the program has ended" has_ended
wait "$display_program" || fail "it ended with status $?"
display_program=''
tr -d '\r' <"$display_dir/words" | grep -qx 'File error encountered:' || fail "nothing was said"
