// How a command ends, and what it throws when it cannot go on.
#pragma once

#include <string>
#include <utility>

namespace veltool {

/// The exit statuses. A command over several files ends with the highest; one
/// that runs something else (a script) may end with that one's own.
inline constexpr int statusGood = 0;
inline constexpr int statusFindings = 1; ///< findings, differences, no hit, an edit refused
inline constexpr int statusFailed = 2;   ///< misuse, or an operation failed

/// Ends a command, or its work on one file, with status 2. The message is
/// shown as `veltool: message`.
class Failure
{
public:
    explicit Failure(std::string message) : message_(std::move(message)) {}
    [[nodiscard]] const std::string &message() const { return message_; }
    [[nodiscard]] int status() const { return status_; }

protected:
    Failure(std::string message, int status) : message_(std::move(message)), status_(status) {}

private:
    std::string message_;
    int status_ = statusFailed;
};

/// An edit that is not made, and leaves everything as it was: status 1.
class Refusal : public Failure
{
public:
    explicit Refusal(std::string message) : Failure(std::move(message), statusFindings) {}
};

/// The message as it is shown: `veltool: message`, ended by a line feed.
[[nodiscard]] std::string messageLine(const std::string &message);

/// Writes that to standard error.
void report(const std::string &message);

/// Throws a Failure with the message of a database or bridge call, with
/// `where` and a colon before it; null passes.
void require(const char *message, const std::string &where = {});

/// A Failure with the system's text for an error number.
[[nodiscard]] Failure systemFailure(const std::string &what, int error);

} // namespace veltool
