// Clock, memory and output of the measurements.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velBench {

/// The result of one measurement. It is printed as one JSON object on a line.
struct Result
{
    std::string name;
    std::uint64_t bytes = 0;  ///< read or written in one run
    std::uint64_t params = 0; ///< parameters, look-ups, calls, elements or rows done in one run
    double seconds = 0;       ///< the best of several runs
    std::int64_t rss = 0;     ///< bytes of memory kept by the work
};

/// The reason why a measurement failed; ends the program with status 2.
class Failure
{
public:
    explicit Failure(std::string message) : message_(std::move(message)) {}
    [[nodiscard]] const std::string &message() const { return message_; }

private:
    std::string message_;
};

/// Seconds of a monotonic clock, the same in every process.
[[nodiscard]] double now();

/// The physical memory of this process, in bytes.
[[nodiscard]] std::int64_t residentBytes();

/// Runs `work` at least three times, and again until all runs together take two
/// seconds. `reset` runs before each run and is not timed. Returns the shortest
/// run, in seconds.
[[nodiscard]] double bestOf(const std::function<void()> &reset, const std::function<void()> &work);

/// False if the line cannot be written to standard output.
[[nodiscard]] bool print(const Result &result);

[[nodiscard]] std::uint64_t fileSize(const std::string &file);
[[nodiscard]] std::vector<std::string> readLines(const std::string &file);

/// `count` positions from 0 to `size` − 1, each about equally often. Their order
/// is pseudo-random, but always the same.
[[nodiscard]] std::vector<std::uint32_t> fixedOrder(std::size_t size, std::size_t count);

/// Throws a Failure with the message, unless it is null.
void require(const char *message);

} // namespace velBench
