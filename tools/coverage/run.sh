#!/bin/sh
# Reports which lines the tests reached, from the counters in build-coverage/.
# ./dev coverage calls it from the root of the tree.
set -eu

out=build-coverage/report
mkdir -p "$out"
# If a program ends while one of its threads still counts, a line or two contradict
# each other. These lines are left out.
gcovr --root . --object-directory build-coverage --gcov-ignore-parse-errors \
    --exclude '.*/tests/.*' --exclude 'build.*' --exclude 'bench/.*' \
    --html-details "$out/index.html" --txt "$out/summary.txt"
cat "$out/summary.txt"
printf 'coverage: see each line in %s/index.html\n' "$out"
