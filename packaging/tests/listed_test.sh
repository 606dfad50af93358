# Tests that no file is forgotten in a list: a test, a Perl package, a help page or a
# rule library that its CMakeLists.txt does not name is never built.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

# unlisted LIST NAME...: prints each NAME that the file LIST does not have as a word.
unlisted() {
    list=$1
    shift
    for name; do
        grep -qw -- "$name" "$list" || echo "$list: $name"
    done
}

# stems FILE...: their names without folder and ending.
stems() {
    for file; do
        file=${file##*/}
        echo "${file%.*}"
    done
}

cd "$scratch"
echo 'add(one_test two.sh)' >list
expect "a file in no list" "list: on
list: three_test" "$(unlisted list one_test two on three_test)"

cd "$VEL_SOURCE_DIR"
for folder in */tests */*/tests; do
    [ -f "$folder/CMakeLists.txt" ] || continue
    # shellcheck disable=SC2046 # no name has a blank
    expect "tests in $folder" "" \
        "$(unlisted "$folder/CMakeLists.txt" $(stems $(find "$folder" -name '*_test.cpp' -o -name '*_test.sh')))"
done
journeys=veleditor/tests/journeys
# shellcheck disable=SC2046
expect "journeys" "" "$(unlisted $journeys/CMakeLists.txt $(stems $journeys/*.sh))"
# shellcheck disable=SC2046
expect "help pages" "" \
    "$(unlisted help/topics/CMakeLists.txt $(stems help/topics/en-us/*.md))"
# shellcheck disable=SC2046
expect "Perl packages" "" "$(unlisted velparser/perl/CMakeLists.txt \
    $(cd velparser/perl && ls -- *.pm VEL/*.p[lm] VEL/*/*.pm))"

# Whoever starts a program names the libraries in the order in which they are read.
for list in libraries/CMakeLists.txt veledit tools/veltool/support/programPlace.cpp \
    cmake/VelTest.cmake velparser/perl/t/lib/VELTest.pm; do
    # shellcheck disable=SC2046
    expect "rule libraries in $list" "" "$(unlisted $list $(cd libraries && ls -- *.vel))"
done
finish
