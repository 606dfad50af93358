// The result of the work on one file, kept until it is printed.
#pragma once

#include "tools/veltool/support/failure.h"

#include <functional>
#include <string>

namespace veltool {

/// The status and the output of a command for one file.
struct FileResult
{
    int status = statusGood;
    std::string out; ///< for standard output
    std::string err; ///< for standard error, whole lines
};

/// The work on one file; it may throw a veltext::Error or bad_alloc.
using FileWork = std::function<FileResult(const std::string &file)>;

/// Runs the work. An exception becomes a message and a status.
[[nodiscard]] FileResult guardedResult(const FileWork &work, const std::string &file);

} // namespace veltool
