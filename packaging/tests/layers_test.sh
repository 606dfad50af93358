# Tests tools/lint/check-layers: it finds nothing in this tree, and it finds each
# kind of mistake in a tree with mistakes.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

check=$VEL_SOURCE_DIR/tools/lint/check-layers

said=$("$check" "$VEL_SOURCE_DIR") && status=0 || status=$?
expect "this tree" "0:" "$status:$said"

# file PATH: writes a file with the text of standard input.
file() {
    mkdir -p "$(dirname -- "$scratch/$1")"
    cat >"$scratch/$1"
}
file common/error.h </dev/null
file velapilt/src/velapilt.h </dev/null
file velapilt/src/velTypes.h </dev/null
file velapilt/src/velNode_p.h </dev/null
file velapilt/src/velGood.h </dev/null
file velapilt/src/velGood.cpp <<'END'
#include "velapilt/src/velGood.h"

#include "common/error.h"
#include "velapilt/src/velNode_p.h"

#include <string>
END
file velparser/api/velparser.h <<'END'
#include "velapilt/src/velTypes.h"
END
file veleditor/src/Window.cpp <<'END'
#include "velapilt/src/velTypes.h"
#include "velparser/api/velparser.h"
#include <QWidget>
END
said=$("$check" "$scratch") && status=0 || status=$?
expect "a good tree" "0:" "$status:$said"

file velapilt/src/velBad.h </dev/null
file velapilt/src/velBad.cpp <<'END'
#include <string>
#include "velapilt/src/velBad.h"
#include <QString>
#include "velparser/api/velparser.h"
#include "velBad.h"
END
file velparser/api/Lite.cpp <<'END'
#include "velapilt/src/velNode_p.h"
#include <perl.h>
END
file veleditor/src/Tree.cpp <<'END'
#include "velapilt/src/velapilt.h"
#include <perl.h>
#include "veltext/veltext.h"
END
file veltext/veltext.h <<'END'
#include "velparser/api/velparser.h"
#include <QString>
END
file help/a.h <<'END'
#include "help/b.h"
END
file help/b.h <<'END'
#include "help/a.h"
END
said=$("$check" "$scratch") && status=0 || status=$?
expect "a bad tree" '1:velapilt/src/velBad.cpp:3: velapilt must not use <QString>
velapilt/src/velBad.cpp:4: velapilt must not use velparser ("velparser/api/velparser.h")
velapilt/src/velBad.cpp:5: "velBad.h" is not a file, seen from the root of the tree
velapilt/src/velBad.cpp:1: its own header "velapilt/src/velBad.h" comes first
veleditor/src/Tree.cpp:1: veleditor must not use velapilt ("velapilt/src/velapilt.h")
veleditor/src/Tree.cpp:2: veleditor must not use <perl.h>
veleditor/src/Tree.cpp:3: veleditor must not use "veltext/veltext.h", which includes the database
velparser/api/Lite.cpp:1: "velapilt/src/velNode_p.h" is private to velapilt
veltext/veltext.h:1: veltext must not use velparser ("velparser/api/velparser.h")
veltext/veltext.h:2: veltext must not use <QString>
help/a.h:1: included in a circle: help/a.h -> help/b.h -> help/a.h' "$status:$said"

finish
