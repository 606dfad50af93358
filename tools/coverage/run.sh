#!/bin/sh
# Reports which lines the tests have reached, from the counters in
# build-coverage/. Called by ./dev coverage from the root of the tree.
set -eu

out=build-coverage/report
mkdir -p "$out"
# A program that ends while one of its threads still counts leaves a line or two
# that contradict each other: these are left out.
gcovr --root . --object-directory build-coverage --gcov-ignore-parse-errors \
    --exclude '.*/tests/.*' --exclude 'build.*' --exclude 'bench/.*' \
    --html-details "$out/index.html" --txt "$out/summary.txt"
cat "$out/summary.txt"
printf 'coverage: line by line in %s/index.html\n' "$out"
