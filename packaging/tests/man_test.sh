# Tests the man pages: every page is well-formed, and veltool(1) has every command
# and option of the help texts and no other.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

PATH=$VEL_BUILD_DIR/bin:$PATH
pages=$VEL_BUILD_DIR/man
for page in veleditor.1 veledit.1 veltool.1 vel.5; do
    expect "mandoc finds nothing in $page" "" "$(mandoc -Tlint -Wstyle "$pages/$page" 2>&1)"
    expect "$page has its name" "${page%.*}" \
        "$(mandoc -Tutf8 "$pages/$page" | sed "s/.$(printf '\b')//g" | awk '/^NAME$/ { getline; print $1 }')"
done

text=$(MANWIDTH=200 mandoc -Tutf8 -O width=200 "$pages/veltool.1" | sed "s/.$(printf '\b')//g")
sections() { printf '%s\n' "$text" | sed -n '/^COMMANDS/,/^EXIT STATUS/s/^   \([a-z].*\)$/\1/p'; }

# The commands as the help lists them; the subcommands follow their command.
commands() {
    veltool --help | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\) *\(.*\)/\1 \2/p' |
        while read -r name first rest; do
            printf '%s\n' "$name"
            case $first in
            *[!a-z\|]* | '') ;;
            *) printf '%s\n' "$first" | tr '|' '\n' | sed "s/^/$name /" ;;
            esac
        done
}
expect "there are commands to look for" "ds list" "$(commands | grep -x 'ds list')"
expect "commands" "$(commands)" "$(sections)"

# options_in_page COMMAND: the terms of the list in its section.
options_in_page() {
    printf '%s\n' "$text" | awk -v name="$1" '
        /^   [a-z]/ { inside = $0 == "   " name }
        /^[A-Z]/ { inside = 0 }
        inside && /^       -/ { print }' |
        sed 's/^ *//; s/   .*//' | tr -d ' ' | tr ',' '\n' | sed 's/^\(--*[a-z-]*\).*/\1/'
}
options_in_help() {
    # shellcheck disable=SC2086 # "ds list" is two words
    veltool $1 --help | sed -n '/^Options:/,$s/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n' |
        sed 's/[=:].*//; /^-h$/d; /^--help$/d; /^--version$/d'
}
commands >"$scratch/commands"
while read -r command; do
    expect "options of $command" "$(options_in_help "$command")" "$(options_in_page "$command")"
done <"$scratch/commands"

expect "a page with a mistake is not made" 1 \
    "$(printf '# no title\n' >"$scratch/bad" &&
        "$VEL_SOURCE_DIR/tools/manual/make-man" "$scratch/bad" 1 >/dev/null 2>&1 && echo 0 || echo 1)"

finish
