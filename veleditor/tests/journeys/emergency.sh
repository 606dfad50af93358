#!/bin/sh
# The editor fails while it builds its rows again, which it does when it adds an expert
# section with a flow object. The program ends, says why, and saves the data to an
# emergency file.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

use - <<'FILE'
LANGUAGE:
  Version = 2.1
END
SEALED: Box
END
FILE
break_rebuilds /SEALED:Box
open_editor "$file"
press ctrl+p
ends_in_emergency
same "$former" "$file.emergency.bak"
[ ! -e "$file" ] || fail "the loaded file was not moved"
cat >"$display_dir/expected.vel" <<'FILE'
LANGUAGE:
  Version = 2.1
END
FLOW: Analysis
  EXPERT PARAMETERS:
  END
END
FILE
same "$display_dir/expected.vel" "$file.emergency"
