# tools/lint/check-environment: silent on this tree; finds a variable that is
# read elsewhere, one without a row in the table, and a row without a variable.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

check=$VEL_SOURCE_DIR/tools/lint/check-environment

said=$("$check" "$VEL_SOURCE_DIR") && status=0 || status=$?
expect "this tree" "0:" "$status:$said"

mkdir -p "$scratch/docs" "$scratch/src/tests"
printf '| `GOOD_NAME` | x |\n' >"$scratch/docs/environment.md"
echo 'auto x = std::getenv("GOOD_NAME");' >"$scratch/src/environment.cpp"
echo 'auto x = std::getenv("TEST_NAME");' >"$scratch/src/tests/some_test.cpp"
said=$("$check" "$scratch") && status=0 || status=$?
expect "a good tree" "0:" "$status:$said"

printf '| `GONE_NAME` | x |\n' >>"$scratch/docs/environment.md"
echo 'auto y = qEnvironmentVariable("NEW_NAME");' >>"$scratch/src/environment.cpp"
echo 'auto z = std::getenv("GOOD_NAME");' >"$scratch/src/other.cpp"
said=$("$check" "$scratch") && status=0 || status=$?
expect "each mistake" "1:src/other.cpp:1: reads the environment; only the environment file of its layer may do that
docs/environment.md:1: has no row for NEW_NAME
docs/environment.md:2: no program reads GONE_NAME" "$status:$said"
finish
