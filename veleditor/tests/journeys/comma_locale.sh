#!/bin/sh
# Opens, changes and saves a real set-up with units and bounds in a locale with a
# decimal comma: the file is the same, byte for byte, as in other locales.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

export ZOT5_VEL_LIBSDIR="$VEL_BUILD_DIR/libraries" ZOT5_VEL_LIBS='rules.vel;upgrades.vel'
export LOCPATH="$display_dir/locales"
mkdir "$LOCPATH"
localedef -i de_DE -f UTF-8 "$LOCPATH/de_DE.UTF-8" || fail "cannot make the locale"

# save_under LOCALE POINT: saves in a locale whose decimal point is POINT.
save_under() {
    export LC_ALL="$1"
    [ "$(locale decimal_point)" = "$2" ] || fail "$1 does not write $2 before decimals"
    use - <"$VEL_SOURCE_DIR/examples/duct.vel"
    open_editor "$file"
    press ctrl+f
    await Find
    write 'Relative Pressure'
    press Return Escape
    await "$file"
    press ctrl+e
    await 'Edit Parameter'
    enter_value '12.5 [Pa]'
    await "$file - Modified"
    press ctrl+s
    await "$file"
    press ctrl+q
    ends_well
    grep -q 'Relative Pressure = 12.5 \[Pa\]' "$file" || fail "the change was not saved"
}

save_under C.UTF-8 .
mv -- "$file" "$display_dir/expected.vel"
save_under de_DE.UTF-8 ,
same "$display_dir/expected.vel" "$file"
