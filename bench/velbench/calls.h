// The measurements, by what they need.
#pragma once

#include "bench/velbench/measure.h"

#include <string>
#include <vector>

namespace velBench {

using Arguments = std::vector<std::string>;

/// One measurement. It throws a Failure when it cannot be made.
struct Call
{
    const char *name;
    const char *arguments; ///< as the usage shows them
    std::size_t fewest;    ///< arguments
    std::size_t most;
    const char *purpose;
    Result (*run)(const Arguments &arguments);
};

Result velParse(const Arguments &arguments);
Result velFormat(const Arguments &arguments);
Result velLookup(const Arguments &arguments);

} // namespace velBench
