// Doing the same to several files.
#pragma once

#include "tools/veltool/support/command.h"

#include <functional>

namespace veltool {

/// Runs `work` for each file in turn. One that fails gives its message and
/// status 2, and the next is done. Gives the highest status. Throws a Failure,
/// before anything is done, when "-" is named more than once: the second would
/// be taken for an empty file.
[[nodiscard]] int forEachFile(std::span<const std::string> files,
                              const std::function<int(const std::string &file)> &work);

} // namespace veltool
