// Collects the output and writes it to standard output in large pieces.
#include "tools/veltool/support/output.h"

#include "tools/veltool/support/failure.h"
#include "veltext/writeAll.h"

#include <cerrno>
#include <unistd.h>

namespace veltool {

namespace {

constexpr std::size_t enoughBytes = 1U << 16U;
constexpr const char *outputName = "standard output";

} // namespace

Output &Output::operator<<(std::string_view text)
{
    pending_ += text;
    if (pending_.size() >= enoughBytes) {
        flush();
    }
    return *this;
}

Output &Output::operator<<(char c)
{
    return *this << std::string_view(&c, 1);
}

void Output::flush()
{
    const std::string text = std::move(pending_);
    pending_.clear();
    if (failed_) {
        return;
    }
    if (const int error = veltext::writeAll(STDOUT_FILENO, text)) {
        failed_ = true;
        throw systemError(outputName, error);
    }
}

void Output::finish()
{
    flush();
    // Some file systems report a full disk only when the file is closed.
    if (close(STDOUT_FILENO) != 0 && errno != EBADF) {
        throw systemError(outputName, errno);
    }
}

Output &out()
{
    static Output output;
    return output;
}

} // namespace veltool
