// Runs git.
#pragma once

#include "tools/veltool/support/command.h"

#include <string>

namespace veltool {

/// The exit status and the output of git.
struct GitResult
{
    int status = 0; ///< 128 + signal if a signal ended git
    std::string out;
};

/// Runs git with these arguments, without a shell. Its standard error is ours.
/// Throws a Failure if git cannot be started.
[[nodiscard]] GitResult runGit(const Words &words);

/// The output of git. Throws a Failure if its status is not 0.
std::string requireGit(const Words &words);

} // namespace veltool
