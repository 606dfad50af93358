// Printing what differs between two sets of command data.
#pragma once

#include "velapilt/src/velapilt.h"

namespace veltool {

/// Prints a line for each object or parameter that differs, or with `json` an array of
/// objects. Gives the status: 1 if anything differs.
[[nodiscard]] int printDifferences(velHandle *before, velHandle *after, bool json);

} // namespace veltool
