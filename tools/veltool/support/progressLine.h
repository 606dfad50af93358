// How far a long run is, on a terminal.
#pragma once

#include <chrono>
#include <string>

namespace veltool {

/// One line on standard error, from the second second on and only where that is
/// a terminal; gone with the object.
class ProgressLine
{
public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    /// "12 of 100 files", or "12%" with an empty `what`.
    void update(std::int64_t done, std::int64_t total, const std::string &what = {});

    /// Makes room for other output; the next update shows the line again.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    bool terminal_;
    bool shown_ = false;
    Clock::time_point next_;
};

} // namespace veltool
