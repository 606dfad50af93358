// Generates a set-up of any size, the same for the same size on every computer.
//
// It has the shape of real set-ups: runs with a few settings, domains with many
// boundaries, few types and parameter names that are repeated often, and object
// names that are unique only in their parent. The paths of parameters have 2 to 6
// components. Values have 5 to 60 characters: words, numbers with units, vectors,
// lists, expressions and free text.
#pragma once

#include "bench/generate/treeWriter.h"

#include <cstdint>

namespace velBench {

/// Calls `writer` for a set-up with exactly `parameters` parameters.
void generateSetup(std::uint64_t parameters, TreeWriter &writer);

} // namespace velBench
