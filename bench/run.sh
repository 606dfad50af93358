#!/bin/sh
# Builds and runs every measurement. Usage: bench/run.sh [BUILD-DIR]
#
# BUILD-DIR (default: build-bench beside the sources) is configured for release
# with VEL_BENCH; the generated trees stand in its folder bench-data.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build-bench}
jobs=$(nproc)

cmake -G Ninja -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DVEL_TESTS=OFF -DVEL_BENCH=ON
ninja -C "$build" -j "$jobs" velbench velgenerate velcompare perl_packages rule_libraries

data=$build/bench-data
mkdir -p "$data"
for size in 50000 1000000; do
    "$build/bin/velgenerate" "$size" "$data"
    tree=$data/tree-$size
    echo "# $size parameters"
    "$build/bin/velbench" vel.parse "$tree.vel"
    "$build/bin/velbench" vel.format "$tree.vel"
    "$build/bin/velbench" vel.lookup "$tree.vel" "$tree.paths"
    "$build/bin/velcompare" tree "$data" "$size"
done

echo "# Perl"
"$build/bin/velbench" perl.call
"$build/bin/velbench" perl.method
"$build/bin/velcompare" perl

echo "# The rules: 2,000, 20,000 and 200,000 lines"
for lines in 2000 20000 200000; do
    rooms=$data/rooms-$lines.vel
    perl "$root/examples/make-large.pl" "$lines" >"$rooms"
    "$build/bin/velbench" rules.cold "$rooms"
    "$build/bin/velbench" rules.validate "$rooms"
    "$build/bin/velbench" rules.edit "$rooms" \
        '/FLOW/DOMAIN:Room 7/BOUNDARY:Supply 7/THROUGHFLOW/Mass Flow Rate'
done

echo "# The editor"
for file in "$root"/examples/*.vel; do
    echo "# $(basename "$file")"
    "$build/bin/velbench" editor.open "$file"
done
