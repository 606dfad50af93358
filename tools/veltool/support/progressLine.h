// Shows the progress of a long run on a terminal.
#pragma once

#include <chrono>
#include <string>

namespace veltool {

/// A line on standard error, shown after one second and only on a terminal. The
/// destructor removes it.
class ProgressLine
{
public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    /// Shows "12 of 100 files", or "12%" if `what` is empty.
    void update(std::int64_t done, std::int64_t total, const std::string &what = {});

    /// Removes the line before other output; the next update shows it again.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    bool terminal_;
    bool shown_ = false;
    Clock::time_point next_;
};

} // namespace veltool
