// How a command ends, and what it throws when it cannot go on.
#pragma once

#include <cstddef>
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
    explicit Failure(std::string message) : message_(message), sentence_(std::move(message)) {}
    /// Of a file; `line` is 0 if no line is at fault.
    Failure(const std::string &file, std::size_t line, std::string sentence);

    [[nodiscard]] const std::string &message() const { return message_; }
    /// The message without the file and the line that are at fault.
    [[nodiscard]] const std::string &sentence() const { return sentence_; }
    [[nodiscard]] std::size_t line() const { return line_; }
    [[nodiscard]] int status() const { return status_; }

protected:
    Failure(std::string message, int status)
        : message_(message), sentence_(std::move(message)), status_(status)
    {
    }

private:
    std::string message_;
    std::string sentence_;
    std::size_t line_ = 0;
    int status_ = statusFailed;
};

/// An edit that is not made, and leaves everything as it was: status 1.
class Refusal : public Failure
{
public:
    explicit Refusal(std::string message) : Failure(std::move(message), statusFindings) {}
};

/// A Refusal of an edit at a path: it names both, says that nothing was
/// written, and ends with the advice, unless that is empty.
[[nodiscard]] Refusal editRefusal(const std::string &file, const std::string &path,
                                  const std::string &message, const std::string &advice = {});

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
