// Clock, memory and output of the measurements.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velBench {

/// What one measurement gives; printed as one JSON object on a line.
struct Result
{
    std::string name;
    std::uint64_t bytes = 0;  ///< read or written in one run
    std::uint64_t params = 0; ///< parameters, look-ups, calls, elements or rows done in one run
    double seconds = 0;       ///< the best of several runs
    std::int64_t rss = 0;     ///< bytes kept, over what the process held before
};

/// What a measurement cannot do; the text ends the program with status 2.
class Failure
{
public:
    explicit Failure(std::string message) : message_(std::move(message)) {}
    [[nodiscard]] const std::string &message() const { return message_; }

private:
    std::string message_;
};

/// Seconds of a clock that never goes back, the same in every process.
[[nodiscard]] double now();

/// The physical memory that this process holds, in bytes.
[[nodiscard]] std::int64_t residentBytes();

/// The shortest of the runs of `work`, in seconds: at least three, more while
/// they take less than two seconds together. `reset` runs untimed before each.
[[nodiscard]] double bestOf(const std::function<void()> &reset, const std::function<void()> &work);

/// False when standard output cannot take the line.
[[nodiscard]] bool print(const Result &result);

[[nodiscard]] std::uint64_t fileSize(const std::string &file);
[[nodiscard]] std::vector<std::string> readLines(const std::string &file);

/// `count` positions below `size`, each equally often as far as it goes, in an
/// order that looks random and is always the same.
[[nodiscard]] std::vector<std::uint32_t> fixedOrder(std::size_t size, std::size_t count);

/// Throws a Failure with the message, unless it is null.
void require(const char *message);

} // namespace velBench
