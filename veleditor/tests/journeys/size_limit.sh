#!/bin/sh
# A limit of the system keeps the file from growing: the save fails with the reason,
# the former file is complete, and the changes are still in the editor.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

words=$(printf 'word %.0s' $(seq 3000))
use - <<FILE
LANGUAGE:
  Version = 2.1
END
FLOW: Analysis
  Run Mode = Steady
  Title = $words
END
FILE
# shellcheck disable=SC2016 # expanded by the inner shell
display_open sh -c 'ulimit -f 8; exec "$@"' sh "$VEL_SOURCE_DIR/veledit" "$file"
await "$file"
press ctrl+p
await "$file - Modified"
press ctrl+s
await 'Error Saving File'
press Return
await "$file - Modified"
same "$former" "$file.bak"
[ ! -e "$file" ] || fail "a part of the data has the name of the file"
press ctrl+q
await 'Unsaved Changes'
press alt+q
ends_well
