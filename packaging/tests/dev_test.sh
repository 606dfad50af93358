# Tests ./dev: what it prints, which packages it installs and how, what it passes
# to cmake and ctest, and its exit status. Every program that it calls is a
# stand-in, which writes its command line to a log.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

unset DISPLAY DESTDIR
tree="$scratch/a tree"
bin="$scratch/bin"
mkdir "$tree" "$bin"
tree=$(cd -- "$tree" && pwd -P)
cp -- "$VEL_SOURCE_DIR/dev" "$tree/dev"
cat >"$tree/packages.txt" <<'END'
# A comment.
alpha
beta   # another
  gamma
END

record="$scratch/log"
export record
# stand_in NAME: makes a program that logs its command line and then runs the lines
# of standard input.
stand_in() {
    {
        # shellcheck disable=SC2016
        printf '#!/bin/sh\necho "%s $*" >>"$record"\n' "$1"
        cat
    } >"$bin/$1"
    chmod +x "$bin/$1"
}
# installed PACKAGE...: sets the packages that dpkg-query reports.
installed() {
    {
        printf '#!/bin/sh\n'
        for package; do printf 'printf "ii %s\\n"\n' "$package"; done
        printf 'printf "rc removed\\n"\n'
    } >"$bin/dpkg-query"
    chmod +x "$bin/dpkg-query"
}
# dev WORD...: runs ./dev; its output is in $said, its status in $status.
dev() {
    : >"$record"
    rm -rf -- "$tree/build" "$tree/build-release"
    said=$(PATH="$bin:$PATH" "$tree/dev" "$@" 2>&1) && status=0 || status=$?
}
stand_in nproc <<'END'
echo 3
END
stand_in id <<'END'
echo 0
END
for name in cmake ctest apt-get; do stand_in "$name" </dev/null; done
installed alpha beta gamma

# --- Words ---

dev
expect "without a word: status" 0 "$status"
expect "without a word: every word is listed" \
    "bench build clean coverage fuzz hook install lint run sanitize screenshots test" \
    "$(printf '%s\n' "$said" | sed -n 's/^  \([a-z]\{1,\}\) .*/\1/p' | sort | tr '\n' ' ' | sed 's/ $//')"
expect "without a word: nothing is done" "" "$(cat "$record")"
dev nonsense
expect "unknown command: status" 2 "$status"
expect "unknown command: message" "dev: unknown command: nonsense" "$(printf '%s\n' "$said" | sed 1q)"

# --- Packages ---

quiet_build='cmake --preset dev
cmake --build --preset dev --parallel 3 -- --quiet'
apt='apt-get -qq -y -o DPkg::Lock::Timeout=600 install --no-install-recommends'
update='apt-get -qq -o DPkg::Lock::Timeout=600 update'
calls() { grep -vE '^(nproc|id) ' "$record" || true; }

dev build
expect "nothing missing: no root rights are needed" "$quiet_build" "$(calls)"
expect "nothing missing: status" 0 "$status"

installed alpha gamma-dev
dev build
expect "missing ones are installed, without an update" "$apt beta gamma
$quiet_build" "$(calls)"
expect "the output" "dev: installing: beta gamma 
dev: building in build/" "$said"

installed alpha beta
printf 'removed\n' >>"$tree/packages.txt"
dev build
expect "a removed package with its settings left is missing" "$apt gamma removed" \
    "$(calls | sed 1q)"
sed -i '/removed/d' "$tree/packages.txt"

stand_in apt-get <<'END'
case $* in
*update) : >"$record.updated" ;;
*) [ -e "$record.updated" ] || { echo "E: Unable to locate package"; exit 100; } ;;
esac
END
dev build
expect "old lists: update, then again" "$apt gamma
$update
$apt gamma
$quiet_build" "$(calls)"

stand_in apt-get <<'END'
echo "E: no network"
exit 100
END
dev build
expect "no network: status" 1 "$status"
expect "no network: apt's own words" "E: no network" "$(printf '%s\n' "$said" | grep -m1 E:)"
expect "no network: nothing is built" "" "$(grep cmake "$record" || true)"

stand_in apt-get </dev/null
stand_in id <<'END'
echo 1000
END
stand_in sudo <<'END'
[ "$1" != -- ] || shift
exec "$@"
END
dev build
expect "not root: through sudo" "sudo -- env DEBIAN_FRONTEND=noninteractive $apt gamma" \
    "$(grep '^sudo' "$record")"
stand_in sudo <<'END'
echo "sudo: a password is required"
exit 1
END
dev build
expect "sudo refuses: status" 1 "$status"
stand_in id <<'END'
echo 0
END
installed alpha beta gamma

# --- Building and testing ---

stand_in cmake <<'END'
case $* in
*--preset*) echo "CMake Error: that is wrong"; exit 1 ;;
esac
END
dev test
expect "configuring fails: status" 1 "$status"
expect "configuring fails: its output is shown" "CMake Error: that is wrong" \
    "$(printf '%s\n' "$said" | grep 'CMake Error')"
stand_in cmake <<'END'
case $* in
*--build*) exit 2 ;;
esac
END
dev test
expect "the build fails: status" 1 "$status"
expect "the build fails: no test runs" "" "$(grep '^ctest' "$record" || true)"

stand_in cmake </dev/null
stand_in ctest <<'END'
echo "the summary"
exit 8
END
dev test -R 'a name'
expect "test: status of ctest" 8 "$status"
expect "test: options go to ctest" \
    "ctest --preset dev --parallel 3 -R a name" \
    "$(grep '^ctest' "$record")"
dev test --quick -R 'a name'
expect "test --quick: its own preset" "ctest --preset quick --parallel 3 -R a name" \
    "$(grep '^ctest' "$record")"
dev test -R 'a name'
expect "test: the summary comes last" "the summary" "$(printf '%s\n' "$said" | tail -n 1)"
dev sanitize
expect "sanitize: its own folder" "cmake --preset sanitize
cmake --build --preset sanitize --parallel 3 -- --quiet
ctest --preset sanitize --parallel 3" "$(calls)"
expect "sanitize: status of ctest" 8 "$status"

mkdir -p "$tree/build-coverage" "$tree/tools/coverage"
: >"$tree/tools/coverage/packages.txt"
cp -- "$VEL_SOURCE_DIR/tools/coverage/run.sh" "$tree/tools/coverage/run.sh"
stand_in gcovr <<'END'
echo "TOTAL 96%" >build-coverage/report/summary.txt
END
stand_in ctest </dev/null
dev coverage -R 'a name'
expect "coverage: options go to ctest" \
    "ctest --preset coverage --parallel 3 -R a name" \
    "$(grep '^ctest' "$record")"
expect "coverage: the table is printed" "TOTAL 96%" "$(printf '%s\n' "$said" | grep TOTAL)"
expect "coverage: status" 0 "$status"
rm -rf -- "$tree/tools"

# --- The nightly run ---

expect ".ci/words runs every word" \
    "$("$VEL_SOURCE_DIR/dev" | sed -n 's/^  \([a-z]\{1,\}\) .*/\1/p' | sort)" \
    "$(sed -n '/^    cat <<END/,/^END/p' "$VEL_SOURCE_DIR/.ci/words" | sed '1d;$d; s/ .*//' | sort)"

# In a clone where ./dev fails for one word.
nightly="$scratch/nightly"
mkdir -p "$nightly/.ci"
cp -- "$VEL_SOURCE_DIR/.ci/words" "$nightly/.ci/words"
cat >"$nightly/dev" <<'END'
#!/bin/sh
echo "dev $*" >>"$record"
[ "$1" != lint ] || { echo "a finding"; exit 1; }
END
chmod +x "$nightly/dev"
git -C "$nightly" init --quiet
git -C "$nightly" add .
git -C "$nightly" -c user.name=a -c user.email=a@example.org commit --quiet -m "Start"
: >"$record"
said=$("$nightly/.ci/words" build lint clean) && status=0 || status=$?
expect "nightly: status" 1 "$status"
expect "nightly: the output" "good    build 
FAILED  lint HEAD
a finding
good    clean " "$said"
expect "nightly: the words that it runs" "dev build
dev lint HEAD
dev clean" "$(cat "$record")"

# --- The hook ---

clone="$scratch/clone"
mkdir -p "$clone/tools/hooks" "$clone/tools/lint"
cp -- "$VEL_SOURCE_DIR/dev" "$clone/dev"
cp -- "$VEL_SOURCE_DIR/tools/hooks/pre-commit" "$clone/tools/hooks/pre-commit"
cat >"$clone/tools/lint/check-words" <<'END'
#!/bin/sh
! grep -n bad "$1/text"
END
chmod +x "$clone/tools/lint/check-words"
git -C "$clone" init --quiet
# commit TEXT: commits a file with that text; prints the status and the output.
commit() {
    echo "$1" >"$clone/text"
    git -C "$clone" add .
    said=$(git -C "$clone" -c user.name=a -c user.email=a@example.org \
        commit --quiet -m "Change" 2>&1) && status=0 || status=$?
}
said=$("$clone/dev" hook 2>&1) && status=0 || status=$?
expect "hook: installed" \
    "0:dev: each commit is checked; git commit --no-verify skips that once" "$status:$said"
commit good
expect "hook: a good commit" "0:" "$status:$said"
commit bad
expect "hook: a bad commit" "1:1:bad
pre-commit: tools/lint/check-words has findings" "$status:$said"
echo good >"$clone/text"
git -C "$clone" add .
echo bad >"$clone/text"
said=$(git -C "$clone" -c user.name=a -c user.email=a@example.org \
    commit --quiet --allow-empty -m "Again" 2>&1) && status=0 || status=$?
expect "hook: checks the staged files" "0:" "$status:$said"
echo "# mine" >"$clone/.git/hooks/pre-commit"
said=$("$clone/dev" hook 2>&1) && status=0 || status=$?
expect "hook: another hook is kept" \
    "1:dev: .git/hooks/pre-commit is there already; remove it first, or call tools/hooks/pre-commit from it" \
    "$status:$said"

# --- Running, installing, cleaning ---

dev run "$scratch/no such.vel"
expect "run: a missing file" "dev: $scratch/no such.vel: no such file" \
    "$(printf '%s\n' "$said" | tail -n 1)"
expect "run: its status" 1 "$status"

dev install /some/prefix
expect "install: from its own folder, without tests" "cmake --preset release
cmake --build --preset release --parallel 3 -- --quiet
cmake --install build-release --prefix /some/prefix" "$(calls)"
here=$(pwd)
dev install relative
expect "install: a relative prefix" \
    "cmake --install build-release --prefix $here/relative" "$(calls | tail -n 1)"
stand_in cmake <<'END'
case $* in
*--install*) echo "Permission denied"; exit 1 ;;
esac
END
dev install
expect "install: not allowed" 1 "$status"

mkdir -p "$tree/build/x" "$tree/build-sanitize" "$tree/builders"
PATH="$bin:$PATH" "$tree/dev" clean
expect "clean: only build folders" "builders
dev
packages.txt" "$(ls "$tree")"

finish
