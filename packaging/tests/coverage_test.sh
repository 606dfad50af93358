# The counters of a coverage build are exact, even if several threads update them.
# Builds, with the flags of the build, a program whose threads all run one branch.
# $1 is the compiler, the other words are the flags.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

cd -- "$scratch"
cat >count.cpp <<'END'
#include <atomic>
#include <thread>
#include <vector>

std::atomic<int> ready;
volatile int sink;

void count()
{
    for (++ready; ready < 4;)
        std::this_thread::yield();
    for (int i = 0; i < 5000000; ++i) {
        if (i % 2 == 0)
            sink = i; // reached by all
    }
}

int main()
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(count);
    for (std::thread &thread : threads)
        thread.join();
}
END
"$@" -O0 -o count count.cpp # not with -pthread, which counts exactly by itself
./count
gcov -b count.gcda count-count.gcda >/dev/null 2>&1 || true
expect "every thread is counted" 10000000 \
    "$(sed -n 's/^ *\([0-9]*\): *[0-9]*:.*reached by all$/\1/p' count.cpp.gcov)"
expect "no negative counts" "" "$(grep -- 'taken -' count.cpp.gcov || true)"

finish
