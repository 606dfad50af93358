// How a command ends, and what it throws when it cannot go on.
#pragma once

#include "veltext/error.h"

#include <string>

namespace veltool {

/// The exit statuses. A command over several files ends with the highest; one
/// that runs something else (a script) may end with that one's own.
inline constexpr int statusGood = 0;
inline constexpr int statusFindings = 1; ///< findings, differences, no hit, an edit refused
inline constexpr int statusFailed = 2;   ///< misuse, or an operation failed

/// Ends a command, or its work on one file, with status 2. The message is
/// shown as `veltool: message`.
class Failure : public veltext::Error
{
public:
    using veltext::Error::Error;
    /// The exit status that it gives.
    [[nodiscard]] int status() const { return status_; }

protected:
    Failure(const std::string &message, int status) : veltext::Error(message), status_(status) {}

private:
    int status_ = statusFailed;
};

/// An edit that is not made, and leaves everything as it was: status 1.
class Refusal : public Failure
{
public:
    explicit Refusal(const std::string &message) : Failure(message, statusFindings) {}
};

/// A Refusal of an edit at a path: it names both, says that nothing was
/// written, and ends with the advice, unless that is empty.
[[nodiscard]] Refusal editRefusal(const std::string &file, const std::string &path,
                                  const std::string &message, const std::string &advice = {});

/// The status with which a command ends after an error: a Failure's own, else 2.
[[nodiscard]] int statusOf(const veltext::Error &error);

/// The message as it is shown: `veltool: message`, ended by a line feed.
[[nodiscard]] std::string messageLine(const std::string &message);

/// Writes that to standard error.
void report(const std::string &message);

using veltext::require;
using veltext::systemError;

} // namespace veltool
