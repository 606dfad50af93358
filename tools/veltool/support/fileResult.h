// The work on one file, done apart from the printing of what it gives.
#pragma once

#include "tools/veltool/support/failure.h"

#include <functional>
#include <string>

namespace veltool {

/// What a command gives for one file.
struct FileResult
{
    int status = statusGood;
    std::string out; ///< for standard output
    std::string err; ///< for standard error, whole lines
};

/// The work on the file of this name; it may throw a veltext::Error or bad_alloc.
using FileWork = std::function<FileResult(const std::string &file)>;

/// Does the work; what it throws becomes a message and a status.
[[nodiscard]] FileResult guardedResult(const FileWork &work, const std::string &file);

} // namespace veltool
