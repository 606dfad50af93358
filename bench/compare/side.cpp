// Times the sides of a comparison and prints the table.
#include "bench/compare/side.h"

#include "bench/velbench/measure.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

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
    // A comparison can take long; show each line at once.
    std::fflush(stdout);
}

/// The processor time that this process has used, in seconds.
double processorTime()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double medianOf(std::vector<double> &times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

} // namespace

void compare(const std::vector<Side *> &sides)
{
    compare(sides, usualRounds);
}

void compare(const std::vector<Side *> &sides, int rounds)
{
    std::vector<std::vector<double>> times(sides.size());
    const double start = now();
    for (int round = 0; round < rounds || now() - start < leastSeconds; ++round) {
        for (std::size_t i = 0; i < sides.size(); ++i) {
            sides[i]->reset();
            const double before = processorTime();
            sides[i]->work();
            times[i].push_back(processorTime() - before);
        }
    }
    for (std::size_t i = 0; i < sides.size(); ++i)
        sides[i]->typical = medianOf(times[i]);
}

void report(const std::string &what, const Side &ours, const std::string &other, const Side &theirs,
            double aim)
{
    reportValues(what, ours.typical * milliseconds, other, theirs.typical * milliseconds, "ms",
                 aim);
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
