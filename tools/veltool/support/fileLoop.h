// Runs the same work on several files.
#pragma once

#include "tools/veltool/support/command.h"

#include <functional>

namespace veltool {

/// Runs `work` for each file and returns the highest status. A file that fails is
/// reported, and the next file follows. Throws a Failure at the start if "-" is
/// named more than once: the second would be read as an empty file.
[[nodiscard]] int forEachFile(std::span<const std::string> files,
                              const std::function<int(const std::string &file)> &work);

} // namespace veltool
