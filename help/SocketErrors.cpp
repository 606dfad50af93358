// The table of socket errors.
#include "help/SocketErrors.h"

#include <array>
#include <cerrno>

namespace velEditor {

namespace {

struct SocketError
{
    int origin; ///< the number on the platform of origin
    int local;  ///< the number of the same failure here, 0 if there is none
    const char *text;
};

constexpr std::array socketErrors{
    SocketError{10014, EFAULT, "buffer fault"},
    SocketError{10022, EINVAL, "error in value"},
    SocketError{10035, EWOULDBLOCK, "receive operation would block"},
    SocketError{10038, ENOTSOCK, "not a socket"},
    SocketError{10040, EMSGSIZE, "message size is too large"},
    SocketError{10045, EOPNOTSUPP, "operation is not supported"},
    SocketError{10050, ENETDOWN, "network failure"},
    SocketError{10054, ECONNRESET, "connection reset"},
    // A send after a reset fails with EPIPE here; the platform of origin has no
    // number for it.
    SocketError{10054, EPIPE, "connection reset"},
    SocketError{10057, ENOTCONN, "socket not connected"},
    SocketError{10093, 0, "not initialized"},
};

} // namespace

std::string socketErrorText(int code)
{
    for (const SocketError &error : socketErrors) {
        if (code != 0 && (code == error.origin || code == error.local)) {
            return error.text;
        }
    }
    return "error code " + std::to_string(code);
}

} // namespace velEditor
