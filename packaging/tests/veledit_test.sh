# Tests veledit: the environment variables that it sets, wherever it is called from.
# The editor is a stand-in that prints its environment and command line.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

unset ZOT5_VEL_PARSER ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS ZOT5ROOT ZOTBUILDID ZOT_HELP_DIR \
    VEL_BUILD_DIR

# place EDITOR DATA: makes a script in place of the editor, and the data that it needs.
place() {
    mkdir -p "$(dirname -- "$1")" "$2/libraries" "$2/etc"
    : >"$2/libraries/rules.vel"
    : >"$2/libraries/upgrades.vel"
    : >"$2/libraries/notes.txt"
    echo 1.2.3 >"$2/etc/version"
    cat >"$1" <<'END'
#!/bin/sh
printf '%s\n' "$ZOT5_VEL_PARSER" "$ZOT5_VEL_LIBSDIR" "$ZOT5_VEL_LIBS" "$ZOT5ROOT" \
    "$ZOTBUILDID" "$ZOT_HELP_DIR"
for word; do printf '<%s>' "$word"; done
END
    chmod +x "$1"
}

# wanted DATA ARGUMENTS: what the stand-in prints if the data is in that folder.
wanted() {
    printf '%s\n' "$1/perl" "$1/libraries" "rules.vel;upgrades.vel" "$1" 1.2.3 "$1/help"
    printf '%s' "$2"
}

scratch=$(cd -- "$scratch" && pwd -P)
tree="$scratch/a tree"
mkdir "$tree"
: >"$tree/CMakeLists.txt"
cp -- "$VEL_SOURCE_DIR/veledit" "$tree/veledit"

got=$("$tree/veledit" x.vel 2>&1) && status=0 || status=$?
expect "not built: status" 1 "$status"
expect "not built: message" \
    "veledit: $tree/build/bin/veleditor is not there; build it: $tree/dev build" "$got"

place "$tree/build/bin/veleditor" "$tree/build"
expect "build tree" "$(wanted "$tree/build" '<-safe><a file.vel>')" \
    "$("$tree/veledit" -safe 'a file.vel')"
expect "no words" "$(wanted "$tree/build" '')" "$("$tree/veledit")"
expect "from its own folder" "$(wanted "$tree/build" '<x>')" "$(cd "$tree" && ./veledit x)"
expect "with CDPATH set" "$(wanted "$tree/build" '<x>')" \
    "$(cd "$scratch" && CDPATH=/ sh 'a tree/veledit' x)"

mkdir "$scratch/links"
ln -s "../a tree/veledit" "$scratch/links/relative"
ln -s "$scratch/links/relative" "$scratch/links/absolute"
expect "through links" "$(wanted "$tree/build" '<x>')" "$("$scratch/links/absolute" x)"

place "$tree/other/bin/veleditor" "$tree/other"
expect "another build folder" "$(wanted "$tree/other" '<x>')" \
    "$(VEL_BUILD_DIR="$tree/other" "$tree/veledit" x)"

prefix="$scratch/a prefix"
mkdir -p "$prefix/bin"
cp -- "$VEL_SOURCE_DIR/veledit" "$prefix/bin/veledit"
place "$prefix/libexec/veleditor/veleditor" "$prefix/share/veleditor"
expect "installed" "$(wanted "$prefix/share/veleditor" '<x>')" "$("$prefix/bin/veledit" x)"

expect "what the user sets stays, also empty" "$(printf '%s\n' p l n r b h '<x>')" \
    "$(ZOT5_VEL_PARSER=p ZOT5_VEL_LIBSDIR=l ZOT5_VEL_LIBS=n ZOT5ROOT=r ZOTBUILDID=b \
        ZOT_HELP_DIR=h "$prefix/bin/veledit" x)"
expect "an empty list of libraries stays empty" "" \
    "$(ZOT5_VEL_LIBS='' "$prefix/bin/veledit" x | sed -n 3p)"
mkdir "$scratch/own"
: >"$scratch/own/rules.vel"
expect "only libraries that the user's folder holds" "rules.vel" \
    "$(ZOT5_VEL_LIBSDIR="$scratch/own" "$prefix/bin/veledit" x | sed -n 3p)"

printf '#!/bin/sh\nexit 7\n' >"$prefix/libexec/veleditor/veleditor"
"$prefix/bin/veledit" x && status=0 || status=$?
expect "the editor's status" 7 "$status"

finish
