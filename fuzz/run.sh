#!/bin/sh
# run.sh BUILD [SECONDS]: runs every fuzz target of a build for SECONDS (default:
# 60). New inputs are kept in BUILD/fuzz/found-NAME; the seeds do not change.
set -eu
build=$1
seconds=${2:-60}
here=$(dirname "$0")
ran=0
for target in "$build"/fuzz/*; do
    name=$(basename "$target")
    seeds=$here/$name
    # Only targets have seeds. Other files in this folder belong to the build.
    if [ ! -f "$target" ] || [ ! -x "$target" ] || [ ! -d "$seeds" ]; then
        continue
    fi
    found=$build/fuzz/found-$name
    mkdir -p "$found"
    echo "$name: $seconds seconds" >&2
    "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 -print_final_stats=1 \
        -artifact_prefix="$build/fuzz/$name-" "$found" "$seeds"
    ran=$((ran + 1))
done
[ "$ran" -gt 0 ] || { echo "run.sh: no fuzz targets in $build/fuzz" >&2; exit 1; }
