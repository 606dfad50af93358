// Reading several files that a command needs together.
#pragma once

#include "tools/veltool/support/command.h"
#include "velapilt/src/velapilt.h"

#include <span>
#include <string>
#include <vector>

namespace veltool {

/// Loads every file into a handle of its own, in the order given. Standard
/// input may be one of them. Every file that cannot be read or parsed gives
/// its message; the last of these is thrown as a Failure.
[[nodiscard]] std::vector<velHandlePtr> loadFiles(const Words &files);

/// Throws a Failure when "-" is named more than once.
void requireOneStandardInput(std::span<const std::string> files);

/// The trees of two files that are to be compared line by line: throws a Failure
/// if what only one of them has nests too deep (mostLevels). A difference far down
/// in both of them is only one line.
[[nodiscard]] std::vector<velHandlePtr> loadFilesToCompare(const Words &files);

} // namespace veltool
