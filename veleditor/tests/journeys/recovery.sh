#!/bin/sh
# The program is killed with unsaved changes. The next start offers them: Restore makes
# them again as one step, which is saved. Changes that are not wanted are discarded.
. "$VEL_SOURCE_DIR/veleditor/tests/journeys/journey.sh"

XDG_STATE_HOME=$display_dir/state
export XDG_STATE_HOME
journals=$XDG_STATE_HOME/veleditor/journal

# change TEXT: gives the title of the set-up this value.
change() {
    select_row 'Title = First run'
    press ctrl+e
    await 'Edit Parameter'
    enter_value "$1"
    await "$file - Modified"
}

kill_editor() {
    kill -9 "$display_program"
    wait "$display_program" 2>/dev/null || true
    display_program=''
}

has_journals() { [ "$(find "$journals" -type f 2>/dev/null | wc -l)" -eq "$1" ]; }
expect_journals() { display_until 10 "there are $1 journals" has_journals "$1"; }

use duct.vel
open_editor "$file"
change 'By hand'
expect_journals 1
kill_editor
is_untouched

open_editor "$file"
press alt+r
await "$file - Modified"
press ctrl+z
await "$file"
press ctrl+y
await "$file - Modified"
press ctrl+s
await "$file"
is_saved 's/Title = First run/Title = By hand/'
expect_journals 0

# A quit without saving leaves nothing, and so does Discard.
press ctrl+q
ends_well
sed -i 's/Title = By hand/Title = First run/' "$file"
cp -- "$file" "$former"
open_editor "$file"
change 'Not wanted'
press ctrl+q
await 'Unsaved Changes'
press alt+q
ends_well
expect_journals 0
open_editor "$file"
change 'Not wanted'
kill_editor
expect_journals 1
open_editor "$file"
press alt+d
expect_journals 0
press ctrl+q
ends_well
is_untouched
