# tools/lint/check-purpose: silent on this tree; finds a source of each kind
# that begins without a comment.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

check=$VEL_SOURCE_DIR/tools/lint/check-purpose

said=$("$check" "$VEL_SOURCE_DIR") && status=0 || status=$?
expect "this tree" "0:" "$status:$said"

mkdir -p "$scratch/a" "$scratch/build"
printf '// What it is.\nint x;\n' >"$scratch/a/good.cpp"
printf '/// What it is.\n#pragma once\n' >"$scratch/a/good.h"
printf 'package Good;\n\nuse strict;\n\n=head1 NAME\n\nGood\n' >"$scratch/a/Good.pm"
printf 'package Early;\n# What it is.\n' >"$scratch/a/Early.pm"
printf '#!/bin/sh\n# What it is.\n' >"$scratch/a/good.sh"
printf '# What it builds.\n' >"$scratch/a/CMakeLists.txt"
printf 'any text\n' >"$scratch/a/notes.txt"
printf 'int made;\n' >"$scratch/build/made.cpp"
said=$("$check" "$scratch") && status=0 || status=$?
expect "a good tree" "0:" "$status:$said"

printf '#include "a.h"\n// Too late.\n' >"$scratch/a/bad.cpp"
printf '//\n' >"$scratch/a/empty.h"
printf 'package Bad;\nuse strict;\nmy $x;\n\n=head1 NAME\n' >"$scratch/a/Bad.pm"
printf '#!/bin/sh\nset -e\n' >"$scratch/a/bad.sh"
printf 'add_library(a)\n' >"$scratch/CMakeLists.txt"
: >"$scratch/a/none.t"
said=$("$check" "$scratch" | cut -d: -f1 | tr '\n' ' ') && status=0 || status=$?
expect "each kind of source" "CMakeLists.txt a/Bad.pm a/bad.cpp a/bad.sh a/empty.h a/none.t " "$said"
finish
