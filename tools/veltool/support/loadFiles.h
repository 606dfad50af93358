// Loads several files that a command needs together.
#pragma once

#include "tools/veltool/support/command.h"
#include "velapilt/src/velapilt.h"

#include <span>
#include <string>
#include <vector>

namespace veltool {

/// Loads each file into its own handle, in the given order. One of them may be
/// standard input. Each file that cannot be read or parsed is reported; the last
/// such message is thrown as a Failure.
[[nodiscard]] std::vector<velHandlePtr> loadFiles(const Words &files);

/// Throws a Failure if "-" is named more than once.
void requireOneStandardInput(std::span<const std::string> files);

/// Loads two files to compare. Throws a Failure if an object that only one file has
/// is nested too deep (mostLevels): it would be printed with all levels. A deep
/// difference between objects that both files have is only one line.
[[nodiscard]] std::vector<velHandlePtr> loadFilesToCompare(const Words &files);

} // namespace veltool
