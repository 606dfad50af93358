#!/bin/sh
# The reader of the editor's standard error has ended when the editor fails: its
# message is lost, the emergency copy is not.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
LANGUAGE:
  Version = 2.1
END
SEALED: Box
END
FILE
break_rebuilds /SEALED:Box
mkfifo "$display_dir/console"
# A pipe can be opened for writing only while somebody could read from it.
# shellcheck disable=SC2016 # expanded by the inner shell
display_open sh -c 'exec 4<>"$1"; exec 2>"$1" 4<&-; shift; exec "$@"' sh \
    "$display_dir/console" "$VEL_SOURCE_DIR/veledit" "$file"
await "$file"
press ctrl+p
ends_well
same "$former" "$file.emergency.bak"
grep -qx '  EXPERT PARAMETERS:' "$file.emergency" || fail "the data is not in the emergency file"

# A help viewer that cannot start prints a message, too; the editor keeps running.
ZOT5_VEL_PARSER=$VEL_BUILD_DIR/perl
ZOT_HELP_DIR=$display_dir/nowhere
export ZOT_HELP_DIR
use duct.vel
# shellcheck disable=SC2016
display_open sh -c 'exec 4<>"$1"; exec 2>"$1" 4<&-; shift; exec "$@"' sh \
    "$display_dir/console" "$VEL_SOURCE_DIR/veledit" "$file"
await "$file"
press F1
await 'Warning'
press Return
await "$file"
press ctrl+q
ends_well
