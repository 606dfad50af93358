// A blocking TCP connection, and the listening side of one.
//
// Every failure is raised as `velEditor::error` with a text for the user; only
// the destructor writes its failure to the error stream instead. Child processes
// do not inherit the socket. If the peer has closed the connection, `socketSend`
// raises an error; there is never a signal. GUI thread only.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace velEditor {

class Socket
{
public:
    /// Makes an unconnected socket, for the listening side.
    Socket() = default;

    /// Connects at once; see `connectHostPort`.
    Socket(const std::string &host, unsigned short port, int attempts);

    /// Closes the socket; a failure is written to the error stream as "Error
    /// closing socket: " and the text.
    virtual ~Socket();

    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    /// This computer's name. Raises "Socket::localHostName - GetComputerName
    /// returned error code: " and the number.
    [[nodiscard]] static std::string localHostName();

    /// Closes the current connection, if any, then connects to the first IPv4
    /// address of `host`. Makes up to `attempts` attempts, at least one, with a
    /// pause of one second between them. Raises "Socket::connectHostPort -
    /// gethostbyname call failed with error: …" or "Socket::connectHostPort -
    /// connect call failed. Could not connect to host: HOST   error code: NUMBER".
    virtual void connectHostPort(const std::string &host, unsigned short port, int attempts);

    /// Sends all `length` bytes. Raises "Socket::socketSend - send  call failed
    /// with error: …", also if the peer has closed the connection or does not
    /// receive everything within five seconds. A peer that has shut down only its
    /// sending half still receives.
    virtual void socketSend(const char *text, std::size_t length);

    /// The result of one receive of at most `size` bytes; empty if the peer has
    /// closed the connection. Blocks until something arrives. Raises
    /// "Socket::socketRecv - recv call failed with error: …".
    [[nodiscard]] virtual std::string socketRecv(std::size_t size);

    /// Closes the connection or the listen port, if there is one. Raises
    /// "Socket::closeAll - closesocket call failed with error: …"; the object is
    /// unconnected after that, too.
    virtual void closeAll();

    /// Opens a port for `waitForConnection`, at the address of this computer's
    /// name; 0 takes any free port (see `port`). Raises "Socket error: …".
    virtual void openListenPort(unsigned short port);

    /// Waits for the next connection to the listen port. Raises "The listen port
    /// is not open.", "Connection timeout after N seconds", or a text that names
    /// the failed call. With KOA_SOCKET_KEEP_INHERITABLE in the environment,
    /// child processes inherit the connection.
    [[nodiscard]] virtual std::unique_ptr<Socket> waitForConnection(std::chrono::seconds limit);

    [[nodiscard]] unsigned short port() const { return port_; }
    /// The descriptor, −1 if the socket is not open.
    [[nodiscard]] int handle() const { return handle_; }
    [[nodiscard]] const std::string &host() const { return host_; }
    [[nodiscard]] int attempts() const { return attempts_; }
    /// Whether this computer's byte order is that of the network.
    [[nodiscard]] bool hasNetworkOrder() const { return networkOrder_; }

private:
    static bool hostHasNetworkOrder();

    unsigned short port_ = 0;
    int handle_ = -1; ///< owned
    std::string host_;
    int attempts_ = 5;
    bool networkOrder_ = hostHasNetworkOrder();
};

} // namespace velEditor
