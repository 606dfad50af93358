// Doing the same to several files.
#pragma once

#include "tools/veltool/command.h"

#include <functional>

namespace veltool {

/// Runs `work` for each file in turn. One that fails gives its message and
/// status 2, and the next is done. Gives the highest status.
[[nodiscard]] int forEachFile(std::span<const std::string> files,
                              const std::function<int(const std::string &file)> &work);

} // namespace veltool
