// Two sides of a comparison, taken in turn, and the table of results.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace velBench {

/// What is timed. `reset` runs before each round, untimed.
struct Side
{
    std::function<void()> reset;
    std::function<void()> work;
    double typical = 0; ///< the median, in seconds
};

/// Runs all sides in turn, several times, so that a busy moment of the machine
/// hits them alike, and keeps the median of each: a virtual machine's clock errs
/// to both sides. What counts is the processor's time, in our code and in the
/// system's for it: files stay in the page cache, so neither the disk nor other
/// programs count. What is short is run more often: for some seconds.
void compare(const std::vector<Side *> &sides);
void compare(const std::vector<Side *> &sides, int rounds);

/// A line of the table: the two times, their ratio, the ratio that is aimed at
/// (0: none) and whether it was met.
void report(const std::string &what, const Side &ours, const std::string &other, const Side &theirs,
            double aim);

/// The same for what is no time; the ratio is ours to theirs.
void reportValues(const std::string &what, double ours, const std::string &other, double theirs,
                  const char *unit, double aim);

/// A value without anything beside it.
void reportAlone(const std::string &what, double value, const char *unit);

/// The line above the table.
void reportHeading();

} // namespace velBench
