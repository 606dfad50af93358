#!/bin/sh
# A save drops comments and says so; the user keeps them. From then on, in later windows
# too, a save changes only the lines of what was edited, until the user sets it otherwise.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

XDG_CONFIG_HOME=$display_dir/config
export XDG_CONFIG_HOME

use - <<'VEL'
# The duct of the second floor.
LANGUAGE:
  Version = 2.1
END
FLOW: Analysis
  Title   = First run   # of four
  Run Mode = Steady
  # The fan is not in the model.
  DOMAIN: Duct # rectangular
    Kind = Fluid
  END
END
VEL

# change_title TEXT: finds the title and gives it this value.
change_title() {
    press Home ctrl+f
    await Find
    write ' run'
    press Return Escape
    await "$file"
    press ctrl+e
    await 'Edit Parameter'
    enter_value "$1"
    await "$file - Modified"
}

open_editor "$file"
change_title 'Second run'
press ctrl+s
await "$file"
display_until 10 'the file is saved' grep -q 'Second run' "$file"
! grep -q '#' "$file" || fail 'the formatted text has comments'
press alt+k
display_until 10 'the comments are back' grep -q '#' "$file"
await "$file"
is_saved 's/First run/Second run/'
grep -qx 'keepLayout=true' "$XDG_CONFIG_HOME/veleditor/veleditor.conf" || fail 'it is not set'
press ctrl+q
ends_well

open_editor "$file"
change_title 'Third run'
press ctrl+s
await "$file"
is_saved 's/Second run/Third run/'

# More, at the right end of the menu bar.
# shellcheck disable=SC2046 # three numbers
set -- $(xwininfo -id "$(xdotool getactivewindow)" | awk '
    /Absolute upper-left [XY]:/ || /Width:/ { print $NF }')
xdotool mousemove $(($1 + $3 - 25)) $(($2 + 12)) click 1
press l
display_until 10 'it is set otherwise' \
    grep -qx 'keepLayout=false' "$XDG_CONFIG_HOME/veleditor/veleditor.conf"
press ctrl+q
ends_well
is_untouched
