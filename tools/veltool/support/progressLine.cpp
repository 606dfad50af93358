// Writes the progress line to a terminal, and removes it.
#include "tools/veltool/support/progressLine.h"

#include <cstdio>
#include <unistd.h>

namespace veltool {

ProgressLine::ProgressLine()
    : terminal_(isatty(STDERR_FILENO) == 1), next_(Clock::now() + std::chrono::seconds(1))
{
}

ProgressLine::~ProgressLine()
{
    clear();
}

void ProgressLine::update(std::int64_t done, std::int64_t total, const std::string &what)
{
    const auto now = Clock::now();
    if (!terminal_ || total <= 0 || now < next_) {
        return;
    }
    next_ = now + std::chrono::milliseconds(200);
    shown_ = true;
    const std::string text =
        what.empty() ? std::to_string(100 * done / total) + '%'
                     : std::to_string(done) + " of " + std::to_string(total) + ' ' + what;
    std::fprintf(stderr, "\r%s", text.c_str());
}

void ProgressLine::clear()
{
    if (shown_) {
        std::fputs("\r\x1b[K", stderr);
    }
    shown_ = false;
}

} // namespace veltool
