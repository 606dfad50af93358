#!/bin/sh
# The window's part of docs/tutorial.md: from its first text to its second.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

# The block of the page with that number, of those that are files.
text_of_page() {
    awk -v wanted="$1" '
        /^```vel / { number++; inside = number == wanted; next }
        /^```/ { inside = 0 }
        inside' "$VEL_SOURCE_DIR/docs/tutorial.md"
}

# find TEXT TITLE: selects the row that holds the text.
find_row() {
    press ctrl+f
    await Find
    press ctrl+a
    write "$1"
    press Return Escape
    await "$2"
}

unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS # the page uses the rules that ship
text_of_page 1 | use -
open_editor 'Command File Validation Errors'
press Return
await 'Command File Errors'
press Escape
await "$file"

find_row Inlte "$file"
press ctrl+e
await 'Edit Parameter'
write Inlet
press alt+o
await "$file - Modified"

find_row '2 [m]' "$file - Modified"
press ctrl+e
await 'Edit Parameter'
enter_value '2 [m s^-1]'
await "$file - Modified"

press ctrl+v
await 'Validation Successful'
press Return
await "$file - Modified"
press ctrl+s
await "$file"
same "$former" "$file.bak"
text_of_page 2 >"$display_dir/expected.vel"
same "$display_dir/expected.vel" "$file"
press ctrl+q
ends_well
