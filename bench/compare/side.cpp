#include "bench/compare/side.h"

#include "bench/velbench/measure.h"

#include <algorithm>
#include <cstdio>

namespace velBench {

namespace {

constexpr int usualRounds = 7;
constexpr double leastSeconds = 3;
constexpr double milliseconds = 1e3;

void printAim(double ratio, double aim)
{
    if (aim > 0)
        std::printf("  %5.2f  %s\n", aim, ratio <= aim ? "met" : "MISSED");
    else
        std::printf("\n");
    // Whoever waits for a long comparison sees each line as it comes.
    std::fflush(stdout);
}

} // namespace

void compare(const std::vector<Side *> &sides)
{
    compare(sides, usualRounds, now);
}

void compare(const std::vector<Side *> &sides, int rounds, Clock clock)
{
    const double start = now();
    for (int round = 0; round < rounds || now() - start < leastSeconds; ++round) {
        for (Side *side : sides) {
            side->reset();
            const double before = clock();
            side->work();
            side->best = std::min(side->best, clock() - before);
        }
    }
}

void report(const std::string &what, const Side &ours, const std::string &other, const Side &theirs,
            double aim)
{
    reportValues(what, ours.best * milliseconds, other, theirs.best * milliseconds, "ms", aim);
}

void reportValues(const std::string &what, double ours, const std::string &other, double theirs,
                  const char *unit, double aim)
{
    const double ratio = ours / theirs;
    std::printf("%-34s %12.3f %-3s %-26s %12.3f %-3s %7.3f", what.c_str(), ours, unit,
                other.c_str(), theirs, unit, ratio);
    printAim(ratio, aim);
}

void reportAlone(const std::string &what, double value, const char *unit)
{
    std::printf("%-34s %12.3f %-3s\n", what.c_str(), value, unit);
    std::fflush(stdout);
}

void reportHeading()
{
    std::printf("%-34s %16s %-26s %16s %7s  %5s\n", "what", "ours", "beside", "theirs", "ratio",
                "aim");
}

} // namespace velBench
