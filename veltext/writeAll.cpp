// Writes to a descriptor until every byte is written.
#include "veltext/writeAll.h"

#include <cerrno>
#include <unistd.h>

namespace veltext {

int writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return errno;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

} // namespace veltext
