# Tests tools/lint/check-documents: it finds nothing in this tree, and it finds each
# kind of mistake in a tree with mistakes.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

check=$VEL_SOURCE_DIR/tools/lint/check-documents

said=$("$check" "$VEL_SOURCE_DIR") && status=0 || status=$?
expect "this tree" "0:" "$status:$said"

cat >"$scratch/dev" <<'END'
#!/bin/sh
echo "  run [FILE]   opens it"
END
chmod +x "$scratch/dev"
mkdir "$scratch/docs"
cat >"$scratch/docs/good.md" <<'END'
# A heading, with `code`
END
cat >"$scratch/README.md" <<'END'
See [good](docs/good.md), [its heading](docs/good.md#a-heading-with-code),
[elsewhere](https://example.org/x), `[no](link)`, and `./dev run x`.
[bad](docs/bad.md) and [worse](docs/good.md#nothing)

    ./dev walk
END
said=$("$check" "$scratch") && status=0 || status=$?
expect "a bad document" '1:README.md:3: there is no file for the link "docs/bad.md"
README.md:3: there is no heading for the link "docs/good.md#nothing"
README.md:5: ./dev has no command "walk"' "$status:$said"

finish
