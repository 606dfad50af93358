#!/bin/sh
# Checks form and common mistakes: clang-format, clang-tidy, shellcheck, perltidy,
# perlcritic and the checks beside this script. Called by ./dev lint from the root of the
# tree, with build/ built; with a revision, only files that differ from it.
set -eu

status=0
finding() {
    printf 'lint: %s\n' "$1" >&2
    status=1
}

jobs=$(nproc 2>/dev/null || echo 1)
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

{
    if [ $# -gt 0 ]; then
        git diff --name-only --diff-filter=d "$1" --
        git ls-files --others --exclude-standard
    else
        git ls-files --cached --others --exclude-standard
    fi
} | sort -u | while read -r file; do
    [ ! -f "$file" ] || printf '%s\n' "$file"
done >"$work/files"

grep -E '\.(cpp|h)$' "$work/files" >"$work/sources" || true
if [ -s "$work/sources" ]; then
    xargs -d '\n' clang-format --dry-run -Werror <"$work/sources" || finding "clang-format -i fixes these"
fi

# clang-tidy takes what the build compiles, but for GCC's precompiled headers,
# which it cannot read; headers come with their sources.
sed 's/ -Winvalid-pch -include [^ ]*//' build/compile_commands.json >"$work/compile_commands.json"
sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/compile_commands.json |
    sed "s|^$(pwd -P)/||" | sort -u >"$work/compiled"
comm -12 "$work/sources" "$work/compiled" >"$work/tidy"
if [ -s "$work/tidy" ]; then
    # What a file would say about system headers is only counted: left out.
    xargs -d '\n' -n 1 -P "$jobs" clang-tidy -p "$work" --quiet <"$work/tidy" 2>"$work/tidy.errors" ||
        finding "clang-tidy has findings"
    grep -vE '^[0-9]+ (warnings?|errors?).*generated|^Suppressed|^Use -header-filter' \
        "$work/tidy.errors" >&2 || true
fi

{
    grep -E '\.sh$' "$work/files" || true
    grep -xE 'dev|veledit|\.ci/run|\.ci/words|tools/hooks/pre-commit' "$work/files" || true
} >"$work/scripts"
if [ -s "$work/scripts" ]; then
    xargs -d '\n' shellcheck --external-sources --shell=sh <"$work/scripts" ||
        finding "shellcheck has findings"
fi

{
    grep -E '\.(pm|pl|t)$' "$work/files" || true
    grep -xE 'tools/(lint/(check|tidy)-|manual/make-).*' "$work/files" || true
} >"$work/perl"
if [ -s "$work/perl" ]; then
    xargs -d '\n' tools/lint/tidy-perl <"$work/perl" || finding "tools/lint/tidy-perl -i fixes these"
    xargs -d '\n' perlcritic --profile .perlcriticrc --quiet <"$work/perl" ||
        finding "perlcritic has findings"
fi

for check in tools/lint/check-*; do
    "$check" || finding "$check has findings"
done

[ "$status" -ne 0 ] || printf 'lint: %s sources, %s scripts: no findings\n' \
    "$(wc -l <"$work/sources")" "$(wc -l <"$work/scripts")"
exit "$status"
