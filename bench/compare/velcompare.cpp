// velcompare: compares our code with the code of others in one process. It runs
// the sides in turn, several times. A line of the table has the median of each
// side, their ratio, the wanted ratio and whether it was met.
#include "bench/compare/comparisons.h"
#include "bench/compare/side.h"
#include "bench/velbench/measure.h"
#include "bench/velbench/surroundings.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

int usage()
{
    std::fputs("usage: velcompare heading\n"
               "       velcompare tree DIR PARAMETERS\n"
               "       velcompare perl\n"
               "       velcompare containers DIR\n"
               "       velcompare growth DIR\n",
               stderr);
    return 2;
}

} // namespace

int main(int count, char **words)
{
    const std::vector<std::string> arguments(words + 1, words + count);
    try {
        if (arguments.size() == 1 && arguments[0] == "heading")
            velBench::reportHeading();
        else if (arguments.size() == 3 && arguments[0] == "tree")
            velBench::compareTrees(arguments[1], std::stoull(arguments[2]));
        else if (arguments.size() == 2 && arguments[0] == "containers")
            velBench::compareContainers(arguments[1]);
        else if (arguments.size() == 2 && arguments[0] == "growth")
            velBench::compareGrowth(arguments[1]);
        else if (arguments.size() == 1 && arguments[0] == "perl") {
            velBench::completeEnvironment();
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
