// The exit statuses, and the exceptions that end a command.
#pragma once

#include "veltext/error.h"

#include <string>

namespace veltool {

/// The exit statuses. A command with several files ends with the highest one; a
/// command that runs a script may end with the script's own status.
inline constexpr int statusGood = 0;
inline constexpr int statusFindings = 1; ///< findings, differences, no match, refused edit
inline constexpr int statusFailed = 2;   ///< usage error or failed operation

/// Ends a command, or its work on one file, with status 2. The user sees
/// `veltool: message`.
class Failure : public veltext::Error
{
public:
    using veltext::Error::Error;
    /// The exit status for this failure.
    [[nodiscard]] int status() const { return status_; }

protected:
    Failure(const std::string &message, int status) : veltext::Error(message), status_(status) {}

private:
    int status_ = statusFailed;
};

/// A refused edit, which changes nothing: status 1.
class Refusal : public Failure
{
public:
    explicit Refusal(const std::string &message) : Failure(message, statusFindings) {}
};

/// A Refusal of an edit at a path: "FILE: PATH: message; nothing was written",
/// followed by "; advice" unless that is empty.
[[nodiscard]] Refusal editRefusal(const std::string &file, const std::string &path,
                                  const std::string &message, const std::string &advice = {});

/// The exit status after an error: that of a Failure, otherwise 2.
[[nodiscard]] int statusOf(const veltext::Error &error);

/// The message as the user sees it: `veltool: message` and a line feed.
[[nodiscard]] std::string messageLine(const std::string &message);

/// Writes messageLine(message) to standard error.
void report(const std::string &message);

using veltext::require;
using veltext::systemError;

} // namespace veltool
