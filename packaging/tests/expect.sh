# What the script tests share; they source this file. It prints each expectation
# that is not met, with the actual text.
#
#     . expect.sh             makes a temporary folder, $scratch, removed at exit
#     expect WHAT WANTED GOT  compares two texts
#     finish                  ends the script: 0 without failures

failures=0
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT

expect() {
    [ "$2" = "$3" ] && return 0
    printf 'FAILED: %s\n--- wanted\n%s\n--- got\n%s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

finish() {
    [ "$failures" -eq 0 ] || printf '%s failed\n' "$failures"
    [ "$failures" -eq 0 ]
    exit
}
