#include "bench/compare/side.h"

#include "bench/velbench/measure.h"

#include <algorithm>
#include <cstdio>

namespace velBench {

namespace {

constexpr int rounds = 7;

} // namespace

void compare(const std::vector<Side *> &sides)
{
    for (int round = 0; round < rounds; ++round) {
        for (Side *side : sides) {
            side->reset();
            const double start = now();
            side->work();
            side->best = std::min(side->best, now() - start);
        }
    }
}

void report(const char *what, const Side &ours, const char *other, const Side &theirs, double aim)
{
    const double ratio = ours.best / theirs.best;
    std::printf("%-22s %10.6f s   %-22s %10.6f s   ratio %5.2f", what, ours.best, other,
                theirs.best, ratio);
    if (aim > 0)
        std::printf("   aim %.2f%s", aim, ratio > aim ? "   MISSED" : "");
    std::printf("\n");
}

} // namespace velBench
