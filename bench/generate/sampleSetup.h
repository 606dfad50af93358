// Generates a set-up of any size, the same for the same size on every computer.
//
// It has the shape of real set-ups: runs with a few settings, domains with many
// boundaries, the same types and parameter names again and again, object names
// that are unique only in their parent. The paths of parameters have 2 to 6
// components; values are 5 to 60 characters long: words, numbers with units,
// vectors, lists, expressions and free text.
#pragma once

#include "bench/generate/treeWriter.h"

#include <cstdint>

namespace velBench {

/// Drives `writer` through a set-up of exactly `parameters` parameters.
void generateSetup(std::uint64_t parameters, TreeWriter &writer);

} // namespace velBench
