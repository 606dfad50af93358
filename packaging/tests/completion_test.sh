# Loads the completions of veltool as the shells do. They offer every command and
# option of the help texts and no other, files, and the paths in a file.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

PATH=$VEL_BUILD_DIR/bin:$PATH
cd "$scratch"
cat >"a case.vel" <<'VEL'
FLOW:
  DOMAIN: Long Duct
    Kind = a = b
    Pressure Drop = 1
  END
  Title = x
END
VEL

# complete WORDS...: what bash offers for the last word, sorted, one on each line.
# WORDS are split as bash splits them.
cat >bash.driver <<'DRIVER'
source "$1"
shift
COMP_LINE=$1 COMP_POINT=${#1}
shift
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
_veltool
printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort
DRIVER
in_bash() {
    bash bash.driver "$VEL_BUILD_DIR/completion/veltool.bash" "$@"
}

# The same for zsh: what the function would offer.
cat >zsh.driver <<'DRIVER'
compadd() { while [[ $1 != -- ]]; do shift; done; shift; printf '%s\n' "$@" }
_describe() { printf '%s\n' "${(@)${(@P)2}%%:*}" }
_files() { print FILES }
funcs=$(sed '/^_veltool "\$@"$/d' $1)
eval "$funcs"
shift
words=("$@") CURRENT=$#
_veltool | LC_ALL=C sort
DRIVER
in_zsh() {
    zsh -f zsh.driver "$VEL_BUILD_DIR/completion/_veltool" "$@"
}

sorted() { LC_ALL=C sort; }

# Reads the help texts in another way than the code that made the completions.
help_commands() {
    veltool --help | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\).*/\1/p'
}

expect "commands in bash" "$(help_commands | sorted)" "$(in_bash 'veltool ' veltool '')"
expect "commands in zsh" "$(help_commands | sorted)" "$(in_zsh veltool '')"
expect "some of them" "get
git-diff
git-setup" "$(in_bash 'veltool g' veltool g)"

# options_of COMMAND...: the options after "Options:", without their values.
options_of() {
    veltool "$@" --help | sed -n '/^Options:/,$s/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n' |
        sed 's/[=:].*//' | sorted
}
check_options() {
    wanted=$(options_of "$@")
    expect "$* has options" yes "$([ -n "$wanted" ] && echo yes)"
    expect "options of $* in bash" "$wanted" "$(in_bash "veltool $* -" veltool "$@" -)"
    expect "options of $* in zsh" "$wanted" "$(in_zsh veltool "$@" -)"
}
for command in $(help_commands); do
    check_options "$command"
done
under=$(veltool ds --help | sed -n 's/^Usage: veltool ds \[OPTIONS\] \([a-z|]*\) .*/\1/p' | tr '|' '\n')
expect "ds in bash" "$(printf '%s\n' "$under" | sorted)" "$(in_bash 'veltool ds ' veltool ds '')"
expect "ds in zsh" "$(printf '%s\n' "$under" | sorted)" "$(in_zsh veltool ds '')"
for command in $under; do
    check_options ds "$command"
done

expect "files in bash" "a case.vel" "$(in_bash 'veltool get a' veltool get a)"
expect "files in zsh" FILES "$(in_zsh veltool get a)"
expect "files after an option" "a case.vel" "$(in_bash 'veltool format -o a' veltool format -o a)"

expect "paths in bash" /FLOW/ "$(in_bash 'veltool get a\ case.vel /F' veltool get 'a\ case.vel' /F |
    grep '/$')"
expect "paths with blanks and colons in bash" 'Long\ Duct
Long\ Duct/' "$(in_bash 'veltool get --json a\ case.vel /FLOW/DOMAIN:L' \
    veltool get --json 'a\ case.vel' /FLOW/DOMAIN : L)"
expect "below them" 'Long\ Duct/Kind
Long\ Duct/Pressure\ Drop' "$(in_bash 'veltool set a\ case.vel /FLOW/DOMAIN:Long\ Duct/' \
    veltool set 'a\ case.vel' /FLOW/DOMAIN : 'Long\ Duct/')"
expect "in quotes" "/FLOW/DOMAIN:Long Duct/Pressure Drop" \
    "$(in_bash "veltool get 'a case.vel' '/FLOW/DOMAIN:Long Duct/P" \
        veltool get "'a case.vel'" "'/FLOW/DOMAIN:Long Duct/P")"
expect "paths in zsh" "/FLOW/DOMAIN:Long Duct/Kind
/FLOW/DOMAIN:Long Duct/Pressure Drop" \
    "$(in_zsh veltool set 'a\ case.vel' '/FLOW/DOMAIN:Long\ Duct/')"
expect "no path after a path" "" "$(in_bash 'veltool get a\ case.vel /FLOW x' \
    veltool get 'a\ case.vel' /FLOW x)"
expect "no paths of a file that cannot be read" "" \
    "$(in_bash 'veltool set none.vel /FLOW' veltool set none.vel /FLOW 2>&1)"

finish
