#!/bin/sh
# Builds and runs every measurement. Usage: bench/run.sh [BUILD-DIR]
#
# Configures BUILD-DIR (default: build-bench in the source tree) with the preset
# `bench`. Its folder bench-data has the generated data, and a line for each
# measurement in velbench.json. Standard output has one table: the measurements
# with a comparison or a limit, with the ratio, the wanted ratio and whether it
# was met; and the other times.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build-bench}
data=$build/bench-data
results=$data/velbench.json
table=$data/table.txt

say() { printf 'bench: %s\n' "$*" >&2; }

quietly() {
    log=$1
    shift
    "$@" >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        say "failed: $*"
        exit 1
    }
}

# table COMMAND...: the lines that it prints are lines of the table. There is no
# pipe, so that a failure of the command ends this script.
table() {
    say "${1##*/} ${2:-} ${3:-}"
    "$@" >"$data/part.txt"
    cat "$data/part.txt"
    cat "$data/part.txt" >>"$table"
}

# measure NAME ARGUMENTS...: measures with velbench, and adds the time to the table.
measure() {
    say "$*"
    "$build/bin/velbench" "$@" >"$data/result.json"
    cat "$data/result.json" >>"$results"
    milliseconds=$(sed -n 's/.*"seconds":\([0-9.]*\).*/\1/p' "$data/result.json" |
        awk '{ printf "%.3f", $1 * 1000 }')
    subject=${2:-}
    printf '%-34s %12s ms\n' "$1 ${subject##*/}" "$milliseconds" >"$data/part.txt"
    cat "$data/part.txt"
    cat "$data/part.txt" >>"$table"
}

mkdir -p "$data"
: >"$results"
: >"$table"
say "building in $build"
quietly "$data/configure.log" cmake --preset bench -S "$root" -B "$build"
quietly "$data/build.log" ninja -C "$build" -j "$(nproc)" \
    velbench velgenerate velcompare perl_packages rule_libraries

table "$build/bin/velcompare" heading

for size in 50000 1000000; do
    tree=$data/tree-$size
    quietly "$data/generate.log" "$build/bin/velgenerate" "$size" "$data"
    measure vel.parse "$tree.vel"
    measure vel.format "$tree.vel"
    measure vel.lookup "$tree.vel" "$tree.paths"
    table "$build/bin/velcompare" tree "$data" "$size"
done

for call in write.raw read.raw write.z5 read.z5 append open locate; do
    measure "ds.$call" "$data"
done
table "$build/bin/velcompare" containers "$data"
table "$build/bin/velcompare" growth "$data"

measure perl.call
measure perl.method
table "$build/bin/velcompare" perl

for lines in 2000 20000 200000; do
    rooms=$data/rooms-$lines.vel
    perl "$root/examples/make-large.pl" "$lines" >"$rooms"
    measure rules.cold "$rooms"
    measure rules.validate "$rooms"
    measure rules.edit "$rooms" '/FLOW/DOMAIN:Room 7/BOUNDARY:Supply 7/THROUGHFLOW/Mass Flow Rate'
done

# The list of editor calls grows; measure all of them.
calls=$("$build/bin/velbench" --help | sed -n 's/^ *\(editor\.[a-z]*\) .*/\1/p')
for file in "$root"/examples/*.vel "$data/rooms-20000.vel"; do
    for call in $calls; do
        measure "$call" "$file"
    done
done

awk '/ met$/ { met++ } / MISSED$/ { missed++ }
    END { printf "\n%d aims met, %d missed\n", met, missed }' "$table"
