// Two sides of a comparison, taken in turn.
#pragma once

#include <functional>
#include <limits>
#include <vector>

namespace velBench {

/// What is timed. `reset` runs before each round, untimed.
struct Side
{
    std::function<void()> reset;
    std::function<void()> work;
    double best = std::numeric_limits<double>::max();
};

/// Runs all sides in turn, several times, so that a busy moment of the machine
/// hits them alike, and keeps the best of each.
void compare(const std::vector<Side *> &sides);

/// Prints both times, their ratio, and whether it is within the aim (0: none).
void report(const char *what, const Side &ours, const char *other, const Side &theirs, double aim);

} // namespace velBench
