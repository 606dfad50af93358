// The same work on many files, spread over processes.
//
// The workers are copies of the process at the time of the call: what it has
// loaded by then (interpreter, rules) is loaded once and shared. Each takes the
// next file that nobody has, so that none waits for another, and sends what it
// got through a pipe. Results come out in the order of the files all the same.
#pragma once

#include "tools/veltool/support/fileResult.h"

#include <cstddef>
#include <span>

namespace veltool {

/// Takes the results, in the order of the files; what it throws ends the run.
using ResultSink = std::function<void(const FileResult &result)>;

/// Makes the result of a file that is not done; `failure` says why.
using FailureResult = std::function<FileResult(const std::string &file, const Failure &failure)>;

/// Works on each file and gives the highest status. With one job, or one file,
/// everything happens in this process. A worker that dies fails the file that
/// it had; the others are still done.
[[nodiscard]] int workOnFiles(std::span<const std::string> files, std::size_t jobs,
                              const FileWork &work, const FailureResult &failed,
                              const ResultSink &sink);

/// The number of a --jobs option, 1 or more. Throws a Failure.
[[nodiscard]] std::size_t parseJobs(const std::string &text);

} // namespace veltool
