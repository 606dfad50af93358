// Running git.
#pragma once

#include "tools/veltool/support/command.h"

#include <string>

namespace veltool {

/// What git left when it ended.
struct GitResult
{
    int status = 0; ///< 128 + signal for one that a signal ended
    std::string out;
};

/// Runs git with these words, as they are: no shell sees them. What it says on
/// standard error goes to ours. Throws a Failure when there is no git.
[[nodiscard]] GitResult runGit(const Words &words);

/// As runGit; throws a Failure for a status that is not 0.
std::string requireGit(const Words &words);

} // namespace veltool
