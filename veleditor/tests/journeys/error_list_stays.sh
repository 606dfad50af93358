#!/bin/sh
# Exit closes the list of errors only after the user has agreed to close the window.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

lists_of_errors() { xdotool search --onlyvisible --name '^Command File Errors$' | wc -l; }

use - <<'FILE'
FLOW: Analysis
  DOMAIN: Duct
  END
END
FILE
open_editor 'Command File Validation Errors'
press Return
for count in 1 2 3 4; do
    await 'Command File Errors'
    [ "$(lists_of_errors)" -eq "$count" ] || fail "there are not $count lists"
    xdotool search --onlyvisible --name "^$file" windowactivate
    display_until 30 "the window has the keys" display_has_focus "$file"
    press ctrl+v
done
await 'Command File Errors'
xdotool search --onlyvisible --name "^$file" windowactivate
await "$file"
select_row 'FLOW: Analysis'
press ctrl+p
await "$file - Modified"
before=$(lists_of_errors)
press ctrl+q
await 'Unsaved Changes'
[ "$(lists_of_errors)" -eq "$before" ] || fail "a list was closed before the question"
press alt+c
await "$file - Modified"
[ "$(lists_of_errors)" -eq "$before" ] || fail "a list was closed by the question"
press ctrl+q
await 'Unsaved Changes'
press alt+q
ends_well
