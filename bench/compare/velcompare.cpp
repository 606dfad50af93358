// velcompare tree DIR PARAMETERS and velcompare perl: our code beside that of
// others in one process. Each side is taken in turn, several times; printed are
// the best of each, their ratio and the ratio aimed at.
#include "bench/compare/comparisons.h"
#include "bench/velbench/measure.h"
#include "tools/veltool/programPlace.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

int usage()
{
    std::fputs("usage: velcompare tree DIR PARAMETERS\n       velcompare perl\n", stderr);
    return 2;
}

} // namespace

int main(int count, char **words)
{
    const std::vector<std::string> arguments(words + 1, words + count);
    try {
        if (arguments.size() == 3 && arguments[0] == "tree")
            velBench::compareTrees(arguments[1], std::stoull(arguments[2]));
        else if (arguments.size() == 1 && arguments[0] == "perl") {
            veltool::completeEnvironment();
            velBench::comparePerl();
        } else
            return usage();
        return std::fflush(stdout) == 0 ? 0 : 2;
    } catch (const velBench::Failure &failure) {
        std::fprintf(stderr, "velcompare: %s\n", failure.message().c_str());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "velcompare: %s\n", error.what());
    }
    return 2;
}
