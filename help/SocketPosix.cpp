// TCP connections with POSIX calls.
#include "help/Socket.h"

#include "common/error.h"
#include "help/SocketErrors.h"
#include "help/helpEnvironment.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velEditor {

namespace {

constexpr int noSocket = -1;
constexpr int listenBacklog = 5;
constexpr std::chrono::milliseconds retryPause(1000);
/// Limit of one connection attempt, for addresses that do not answer.
constexpr std::chrono::milliseconds connectLimit(1000);
/// Limit for sending one text.
constexpr std::chrono::milliseconds sendLimit(5000);
constexpr std::chrono::milliseconds sendPause(100);
/// Pause between two checks whether the peer has confirmed what was sent.
constexpr std::chrono::milliseconds confirmPause(2);

[[noreturn]] void raise(const std::string &text, int code)
{
    throw error(text + socketErrorText(code));
}

/// Finds the first IPv4 address of a host. Returns 0 or the resolver's code.
/// This computer is found even if the resolver does not know its name.
int resolve(const std::string &host, sockaddr_in &address)
{
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (const int code = ::getaddrinfo(host.c_str(), nullptr, &hints, &found)) {
        if (host != Socket::localHostName()) {
            return code;
        }
        address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return 0;
    }
    address = *reinterpret_cast<const sockaddr_in *>(found->ai_addr);
    ::freeaddrinfo(found);
    return 0;
}

/// Sets whether child processes inherit the descriptor.
void setInheritable(int handle, bool inheritable)
{
    ::fcntl(handle, F_SETFD, inheritable ? 0 : FD_CLOEXEC);
}

int newSocket()
{
    const int handle = ::socket(AF_INET, SOCK_STREAM, 0);
    if (handle == noSocket) {
        raise("Socket error: ", errno);
    }
    setInheritable(handle, false);
    return handle;
}

/// The result of `poll` for one event. A signal starts the wait again, so it can
/// take longer than `limit`.
int pollFor(int handle, short event, std::chrono::milliseconds limit)
{
    const auto whole = std::min<std::chrono::milliseconds::rep>(limit.count(), INT_MAX);
    pollfd entry{handle, event, 0};
    int ready = 0;
    do {
        ready = ::poll(&entry, 1, static_cast<int>(whole));
    } while (ready < 0 && errno == EINTR);
    return ready;
}

/// Waits for a connection that was started without blocking. Returns an error code.
int awaitConnection(int handle)
{
    const int ready = pollFor(handle, POLLOUT, connectLimit);
    if (ready < 0) {
        return errno;
    }
    if (ready == 0) {
        return ETIMEDOUT;
    }
    int code = 0;
    socklen_t size = sizeof code;
    ::getsockopt(handle, SOL_SOCKET, SO_ERROR, &code, &size);
    return code;
}

/// Makes one connection attempt; the handle blocks again afterwards. Returns an
/// error code.
int tryConnect(int handle, const sockaddr_in &address)
{
    const int flags = ::fcntl(handle, F_GETFL);
    ::fcntl(handle, F_SETFL, flags | O_NONBLOCK);
    int code = 0;
    if (::connect(handle, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        code = errno == EINPROGRESS || errno == EINTR ? awaitConnection(handle) : errno;
    }
    ::fcntl(handle, F_SETFL, flags);
    return code;
}

/// Which of `events`, or of those that `poll` always reports, have happened.
short eventsOf(int handle, short events)
{
    pollfd entry{handle, events, 0};
    return ::poll(&entry, 1, 0) > 0 ? entry.revents : short{0};
}

/// Whether the connection has been reset, or closed in both directions.
bool isLost(int handle)
{
    return (eventsOf(handle, 0) & (POLLHUP | POLLERR)) != 0;
}

/// Whether the peer has closed its sending half. It may still receive; only a
/// send shows whether the whole connection is closed.
bool peerSendsNoMore(int handle)
{
    return (eventsOf(handle, POLLRDHUP) & POLLRDHUP) != 0;
}

/// Whether the peer has received everything that was sent. A peer that has closed
/// the connection resets it instead.
bool arrives(int handle)
{
    const auto end = std::chrono::steady_clock::now() + sendLimit;
    for (;;) {
        int unconfirmed = 0;
        const bool isConfirmed = ::ioctl(handle, SIOCOUTQ, &unconfirmed) != 0 || unconfirmed == 0;
        if (isLost(handle)) {
            return false;
        }
        if (isConfirmed || std::chrono::steady_clock::now() >= end) {
            return true;
        }
        std::this_thread::sleep_for(confirmPause);
    }
}

} // namespace

Socket::Socket(const std::string &host, unsigned short port, int attempts)
{
    Socket::connectHostPort(host, port, attempts);
}

Socket::~Socket()
{
    try {
        Socket::closeAll();
    } catch (const error &failure) {
        std::fprintf(stderr, "Error closing socket: %s\n", failure.message().c_str());
    }
}

bool Socket::hostHasNetworkOrder()
{
    return htonl(1) == 1;
}

std::string Socket::localHostName()
{
    std::array<char, HOST_NAME_MAX + 1> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0) {
        throw error("Socket::localHostName - GetComputerName returned error code: " +
                    std::to_string(errno));
    }
    return name.data();
}

// A socket cannot be used again after a failed connection, so each attempt makes
// a new one.
void Socket::connectHostPort(const std::string &host, unsigned short port, int attempts)
{
    Socket::closeAll();
    host_ = host;
    port_ = port;
    attempts_ = attempts;

    sockaddr_in address{};
    if (const int code = resolve(host, address)) {
        raise("Socket::connectHostPort - gethostbyname call failed with error: ", code);
    }
    address.sin_port = htons(port);

    int code = 0;
    for (int tries = 0; tries < std::max(attempts, 1); ++tries) {
        if (tries > 0) {
            std::this_thread::sleep_for(retryPause);
        }
        handle_ = newSocket();
        code = tryConnect(handle_, address);
        if (code == 0) {
            return;
        }
        Socket::closeAll();
    }
    throw error("Socket::connectHostPort - connect call failed. Could not connect to host: " +
                host + "   error code: " + std::to_string(code));
}

void Socket::socketSend(const char *text, std::size_t length)
{
    const std::string failed = "Socket::socketSend - send  call failed with error: ";
    if (handle_ == noSocket) {
        raise(failed, ENOTCONN);
    }
    if (isLost(handle_)) {
        raise(failed, ECONNRESET);
    }
    const auto end = std::chrono::steady_clock::now() + sendLimit;
    for (std::size_t sent = 0; sent < length;) {
        const ssize_t count =
            ::send(handle_, text + sent, length - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno == EWOULDBLOCK && std::chrono::steady_clock::now() < end) {
            pollFor(handle_, POLLOUT, sendPause);
        } else if (errno != EINTR) {
            raise(failed, errno);
        }
    }
    if (peerSendsNoMore(handle_) && !arrives(handle_)) {
        raise(failed, ECONNRESET);
    }
}

std::string Socket::socketRecv(std::size_t size)
{
    const std::string failed = "Socket::socketRecv - recv call failed with error: ";
    if (handle_ == noSocket) {
        raise(failed, ENOTCONN);
    }
    std::string text(size, '\0');
    ssize_t count = 0;
    do {
        count = ::recv(handle_, text.data(), size, 0);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        raise(failed, errno);
    }
    text.resize(static_cast<std::size_t>(count));
    return text;
}

// The descriptor is closed even if a signal interrupts the call, so EINTR is not
// an error.
void Socket::closeAll()
{
    if (handle_ == noSocket) {
        return;
    }
    const int closed = ::close(handle_);
    handle_ = noSocket;
    if (closed != 0 && errno != EINTR) {
        raise("Socket::closeAll - closesocket call failed with error: ", errno);
    }
}

void Socket::openListenPort(unsigned short port)
{
    closeAll();
    host_ = localHostName();
    sockaddr_in address{};
    if (const int code = resolve(host_, address)) {
        raise("Socket error: ", code);
    }
    address.sin_port = htons(port);

    handle_ = newSocket();
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    if (::bind(handle_, generic, size) != 0 || ::listen(handle_, listenBacklog) != 0 ||
        ::getsockname(handle_, generic, &size) != 0) {
        const int code = errno;
        closeAll();
        raise("Socket error: ", code);
    }
    port_ = ntohs(address.sin_port);
}

std::unique_ptr<Socket> Socket::waitForConnection(std::chrono::seconds limit)
{
    if (handle_ == noSocket) {
        throw error("The listen port is not open.");
    }
    const int ready = pollFor(handle_, POLLIN, limit);
    if (ready < 0) {
        raise("Socket::waitForConnection - select call failed with error: ", errno);
    }
    if (ready == 0) {
        throw error("Connection timeout after " + std::to_string(limit.count()) + " seconds");
    }
    auto connection = std::make_unique<Socket>();
    connection->handle_ = ::accept(handle_, nullptr, nullptr);
    if (connection->handle_ == noSocket) {
        raise("Socket::waitForConnection - accept call failed with error: ", errno);
    }
    setInheritable(connection->handle_, socketsAreInherited());
    connection->host_ = host_;
    connection->port_ = port_;
    return connection;
}

} // namespace velEditor
