// Runs the same work on many files, in several processes.
//
// The workers are forked from this process, so that they share what it has loaded
// (interpreter, rules). Each worker takes the next free file and sends its result
// through a pipe. The results are passed on in the order of the files.
#pragma once

#include "tools/veltool/support/fileResult.h"

#include <cstddef>
#include <span>

namespace veltool {

/// Receives the results in the order of the files. An exception ends the run.
using ResultSink = std::function<void(const FileResult &result)>;

/// Makes the result for a file that was not processed; `failure` says why.
using FailureResult = std::function<FileResult(const std::string &file, const Failure &failure)>;

/// Works on each file and returns the highest status. With one job, or one file, all
/// work is done in this process. If a worker dies, only its current file fails.
[[nodiscard]] int workOnFiles(std::span<const std::string> files, std::size_t jobs,
                              const FileWork &work, const FailureResult &failed,
                              const ResultSink &sink);

/// The number in a --jobs option, 1 or more. Throws a Failure.
[[nodiscard]] std::size_t parseJobs(const std::string &text);

} // namespace veltool
