#!/bin/sh
# The editor fails while a dialog is open. The dialog closes, and the emergency save
# asks whether to save with errors and follows the answer.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
LANGUAGE:
  Colour = green
END
SEALED: Box
END
FILE
break_rebuilds /SEALED:Box

lists_of_errors() { xdotool search --onlyvisible --name '^Command File Errors$' | wc -l; }

# to_failure: closes the box about the first errors, whose list stays open, and
# triggers the failure. The next list is the question.
to_failure() {
    open_editor 'Command File Validation Errors'
    press Return
    await 'Command File Errors'
    xdotool search --onlyvisible --name "^$file$" windowactivate
    await "$file"
    press ctrl+p
    await 'Command File Errors'
    [ "$(lists_of_errors)" -eq 1 ] || fail "the dialog is still open"
}

to_failure
press alt+n
ends_in_emergency
is_untouched
[ ! -e "$file.emergency" ] || fail "the answer No was not heeded"

to_failure
press alt+y
ends_in_emergency
same "$former" "$file.emergency.bak"
grep -qx '  Colour = green' "$file.emergency" || fail "the data is not in the emergency file"

# The list of an upgrade is open when the rows of the upgraded data are built.
use old.vel
ZOT5_VEL_PARSER=$VEL_BUILD_DIR/perl
rm -r "$display_dir/perl"
break_rebuilds /FLOW:Analysis
open_editor 'Command File Updated.'
press alt+y
await 'Command File Editor' # the start has failed
press Return
ends_in_emergency
same "$former" "$file.emergency.bak"
