# Does what docs/tutorial.md says: runs every command in one shell, with an
# installation of this build, and compares the output with the page. The editor
# must open the file without a message. The journey of the same name does what the
# page does in the window.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

unset ZOT5_VEL_PARSER ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS ZOT5ROOT ZOTBUILDID ZOT_HELP_DIR
page=$VEL_SOURCE_DIR/docs/tutorial.md

# Installs this build instead of making another.
mkdir "$scratch/tree" "$scratch/home"
cat >"$scratch/tree/dev" <<'END'
#!/bin/sh
"$VEL_SOURCE_DIR/dev" help | grep -q "^  $1 " || echo "no word $1"
cmake --install "$VEL_BUILD_DIR" --prefix "$2" >"$HOME/log" 2>&1 || cat "$HOME/log"
END
chmod +x "$scratch/tree/dev"

# The page as a shell script. A block with a name is a file; what the editor
# saves comes second, so that the former text becomes the .bak.
{
    cat <<'END'
set +e
veledit() {
    timeout 3 "$HOME/vel/bin/veledit" "$@" 2>"$HOME/words"
    [ $? -eq 124 ] || echo "the editor does not stay open"
    grep -v '^This plugin does not support' "$HOME/words" # of the offscreen platform
}
END
    awk -v quote="'" '
        /^```./ { kind = substr($1, 4); name = $2
                  if (name) printf "[ ! -e %s ] || cp %s %s.bak\ncat >%s <<\\END_OF_FILE\n", name, name, name, name
                  next }
        /^```/ { if (name) print "END_OF_FILE"
                 kind = name = ""; next }
        name { print; next }
        kind == "console" && /^\$ / {
            shown = $0
            gsub(quote, quote "\\" quote quote, shown)
            printf "printf \"%%s\\n\" %s%s%s\n%s\n", quote, shown, quote, substr($0, 3) }' "$page"
} >"$scratch/session"

expect "the page has commands" yes "$([ "$(grep -c '^\$ ' "$page")" -gt 8 ] && echo yes)"
expect "every block is a file or runs here" "" "$(sed -n '/^```$/d; /^```console$/d; /^```vel [^ ]*$/d; /^```/p' "$page")"
expect "what the commands print" \
    "$(awk '/^```console/ { inside = 1; next } /^```/ { inside = 0 } inside' "$page")" \
    "$(cd "$scratch/tree" && HOME=$scratch/home sh "$scratch/session" 2>&1)"

finish
