# tools/lint/check-words: silent on this tree; finds each pattern of the table,
# also across the end of a line, and leaves kept texts alone.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

check=$VEL_SOURCE_DIR/tools/lint/check-words

said=$("$check" "$VEL_SOURCE_DIR") && status=0 || status=$?
expect "this tree" "0:" "$status:$said"

mkdir -p "$scratch/docs" "$scratch/tools/lint" "$scratch/build/old"
cat >"$scratch/docs/writing.md" <<'END_OF_TABLE'
| `before` | a table above the heading does not count |

## Words to avoid

| pattern | write instead |
|---|---|
| `yonder` | there |
| `far and wide\|hither` | everywhere |
END_OF_TABLE
cat >"$scratch/tools/lint/kept-texts" <<'END_OF_TEXTS'
# comment
the yonder message
END_OF_TEXTS
echo "nothing before, not yondering, not yonder-land-like beyonder" | sed 's/yonder-land-like//' \
    >"$scratch/good.txt"
echo "says the yonder message" >>"$scratch/good.txt"
echo "yonder" >"$scratch/build/old/made.txt"
said=$("$check" "$scratch") && status=0 || status=$?
expect "a good tree" "0:" "$status:$said"

cat >"$scratch/bad.cpp" <<'END_OF_SOURCE'
// It is Yonder, far
// and wide.
int hither;
END_OF_SOURCE
said=$("$check" "$scratch") && status=0 || status=$?
expect "each pattern, across lines and in any case" '1:bad.cpp:1: "Yonder": write there
bad.cpp:1: "far // and wide": write everywhere
bad.cpp:3: "hither": write everywhere' "$status:$said"
said=$("$check" "$scratch" good.txt) && status=0 || status=$?
expect "only the files named" "0:" "$status:$said"

: >"$scratch/docs/writing.md"
said=$("$check" "$scratch" 2>&1) && status=0 || status=$?
expect "no table" "check-words: docs/writing.md has no table of words to avoid" "$said"
finish
