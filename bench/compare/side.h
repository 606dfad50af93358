// Times the sides of a comparison in turn, and prints the table of results.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace velBench {

/// One side of a comparison. `work` is timed. `reset` runs before each round and
/// is not timed.
struct Side
{
    std::function<void()> reset;
    std::function<void()> work;
    double typical = 0; ///< the median, in seconds
};

/// Runs all sides in turn, several times, so that a busy moment of the computer
/// affects them equally. Keeps the median of each, because the clock of a virtual
/// machine may be wrong in both directions. Measures the processor time of this
/// process, including system calls. Files stay in the page cache, so the disk and
/// other programs do not count. Short work is repeated for some seconds.
void compare(const std::vector<Side *> &sides);
void compare(const std::vector<Side *> &sides, int rounds);

/// Prints a line of the table: the two times, their ratio, the wanted ratio (0:
/// none) and whether it was met.
void report(const std::string &what, const Side &ours, const std::string &other, const Side &theirs,
            double aim);

/// Like report(), for values that are not times. The ratio is ours to theirs.
void reportValues(const std::string &what, double ours, const std::string &other, double theirs,
                  const char *unit, double aim);

/// Prints a value that is not compared with anything.
void reportAlone(const std::string &what, double value, const char *unit);

/// Prints the heading of the table.
void reportHeading();

} // namespace velBench
