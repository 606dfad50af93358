// Tests connections between two sockets on this computer, and their errors.
#include "help/Socket.h"

#include "common/error.h"
#include "help/SocketErrors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velEditor {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;

/// Both ends of a connection.
class Pair
{
public:
    Pair()
    {
        listener.openListenPort(0);
        client = std::make_unique<Socket>(Socket::localHostName(), listener.port(), 5);
        server = listener.waitForConnection(patience);
    }

    Socket listener;
    std::unique_ptr<Socket> client;
    std::unique_ptr<Socket> server;
};

/// The text of the error that an action raises.
template <typename Action>
std::string raisedBy(Action action)
{
    try {
        action();
    } catch (const error &failure) {
        return failure.message();
    }
    return "nothing raised";
}

void send(Socket &socket, const std::string &text)
{
    socket.socketSend(text.data(), text.size());
}

/// Receives `size` bytes, or fewer if the peer closes the connection.
std::string receive(Socket &socket, std::size_t size)
{
    std::string all;
    while (all.size() < size) {
        const std::string part = socket.socketRecv(size - all.size());
        if (part.empty()) {
            break;
        }
        all += part;
    }
    return all;
}

/// A port at which nobody listens.
unsigned short freePort()
{
    Socket listener;
    listener.openListenPort(0);
    return listener.port();
}

} // namespace

TEST(Socket, carriesTextBothWays)
{
    const Pair pair;
    send(*pair.client, "ZOT:Master Contents\n");
    EXPECT_EQ("ZOT:Master Contents\n", receive(*pair.server, 20));
    send(*pair.server, "yes");
    EXPECT_EQ("yes", receive(*pair.client, 3));
}

TEST(Socket, knowsItsHostAndPort)
{
    const Pair pair;
    EXPECT_EQ(Socket::localHostName(), pair.client->host());
    EXPECT_EQ(pair.listener.port(), pair.client->port());
    EXPECT_EQ(5, pair.client->attempts());
    EXPECT_EQ(5, Socket().attempts());
    EXPECT_EQ(htonl(1) == 1, Socket().hasNetworkOrder());
}

TEST(Socket, isNotInheritedByChildren)
{
    const Pair pair;
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(pair.client->handle(), F_GETFD));
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(pair.server->handle(), F_GETFD));
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(pair.listener.handle(), F_GETFD));
}

TEST(Socket, isInheritedIfTheEnvironmentSaysSo)
{
    ::setenv("KOA_SOCKET_KEEP_INHERITABLE", "", 1);
    const Pair pair;
    ::unsetenv("KOA_SOCKET_KEEP_INHERITABLE");
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(pair.client->handle(), F_GETFD));
    EXPECT_EQ(0, ::fcntl(pair.server->handle(), F_GETFD));
}

TEST(Socket, sendsMoreThanThePeerReceivesAtOnce)
{
    const Pair pair;
    const std::string text(3'000'000, 'x');
    // A child process reads, because both ends block.
    const pid_t reader = ::fork();
    if (reader == 0) {
        ::_exit(receive(*pair.server, text.size()) == text ? 0 : 1);
    }
    send(*pair.client, text);
    int status = -1;
    ASSERT_EQ(reader, ::waitpid(reader, &status, 0));
    EXPECT_EQ(0, status);
}

TEST(Socket, givesUpOnAPeerThatReceivesNothing)
{
    const Pair pair;
    std::string text;
    text.resize(50'000'000, 'x');
    EXPECT_EQ("Socket::socketSend - send  call failed with error: receive operation would block",
              raisedBy([&] { send(*pair.client, text); }));
}

/// The time that so many attempts take at a port where nobody listens.
std::chrono::steady_clock::duration timeOfAttempts(int attempts)
{
    const unsigned short port = freePort();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ("Socket::connectHostPort - connect call failed. Could not connect to host: "
              "127.0.0.1   error code: " +
                  std::to_string(ECONNREFUSED),
              raisedBy([&] { const Socket socket("127.0.0.1", port, attempts); }));
    return std::chrono::steady_clock::now() - begin;
}

TEST(Socket, triesOnceAtLeast)
{
    for (const int attempts : {1, 0, -3}) {
        // With a pause, every run takes more than a second; a busy machine slows
        // only some runs.
        auto shortest = timeOfAttempts(attempts);
        for (int more = 0; more < 5 && shortest >= 900ms; ++more) {
            shortest = std::min(shortest, timeOfAttempts(attempts));
        }
        EXPECT_LT(shortest, 900ms);
    }
}

TEST(Socket, triesAgainAfterASecond)
{
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_NE("nothing raised", raisedBy([&] { const Socket socket("127.0.0.1", freePort(), 3); }));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 2000ms);
}

TEST(Socket, waitsForAListenerThatComesLater)
{
    const unsigned short port = freePort();
    const pid_t server = ::fork();
    if (server == 0) {
        ::usleep(300'000);
        Socket listener;
        listener.openListenPort(port);
        send(*listener.waitForConnection(patience), "late");
        ::_exit(0);
    }
    Socket client(Socket::localHostName(), port, 5);
    EXPECT_EQ("late", receive(client, 4));
    ::waitpid(server, nullptr, 0);
}

TEST(Socket, saysThatAHostIsUnknown)
{
    const std::string text = raisedBy([] { const Socket socket("no such host.invalid", 80, 1); });
    EXPECT_EQ(0U, text.find("Socket::connectHostPort - gethostbyname call failed with error: error "
                            "code "))
        << text;
}

TEST(Socket, noticesAPeerThatHasClosed)
{
    const Pair pair;
    send(*pair.server, "unread");
    pair.server->closeAll();
    EXPECT_EQ("Socket::socketSend - send  call failed with error: connection reset",
              raisedBy([&] { send(*pair.client, "x"); }));
}

// The system's "broken pipe" (EPIPE) is a lost connection too.
TEST(Socket, noticesAPeerThatHasClosedWithNothingUnread)
{
    const Pair pair;
    pair.server->closeAll();
    EXPECT_EQ("Socket::socketSend - send  call failed with error: connection reset",
              raisedBy([&] { send(*pair.client, "x"); }));
    EXPECT_EQ("Socket::socketSend - send  call failed with error: connection reset",
              raisedBy([&] { send(*pair.client, "y"); }));
}

// A peer that shuts down only its sending half still receives.
TEST(Socket, sendsToAPeerThatSendsNoMore)
{
    const Pair pair;
    ASSERT_EQ(0, ::shutdown(pair.server->handle(), SHUT_WR));
    for (const char *text : {"one", "two", "six"}) {
        send(*pair.client, text);
        EXPECT_EQ(text, receive(*pair.server, 3));
    }
    pair.server->closeAll();
    EXPECT_EQ("Socket::socketSend - send  call failed with error: connection reset",
              raisedBy([&] { send(*pair.client, "x"); }));
}

TEST(Socket, endsReceivingWhenThePeerCloses)
{
    const Pair pair;
    pair.client->closeAll();
    EXPECT_EQ("", pair.server->socketRecv(10));
}

TEST(Socket, saysThatAPeerHasResetTheConnection)
{
    const Pair pair;
    const linger atOnce{1, 0};
    ::setsockopt(pair.client->handle(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    pair.client->closeAll();
    EXPECT_EQ("Socket::socketRecv - recv call failed with error: connection reset",
              raisedBy([&] { static_cast<void>(pair.server->socketRecv(10)); }));
}

TEST(Socket, saysThatItIsNotConnected)
{
    Socket socket;
    EXPECT_EQ("Socket::socketSend - send  call failed with error: socket not connected",
              raisedBy([&] { send(socket, "x"); }));
    EXPECT_EQ("Socket::socketRecv - recv call failed with error: socket not connected",
              raisedBy([&] { static_cast<void>(socket.socketRecv(1)); }));
}

TEST(Socket, saysThatItCouldNotBeClosed)
{
    Socket socket;
    socket.openListenPort(0);
    ::close(socket.handle());
    EXPECT_EQ("Socket::closeAll - closesocket call failed with error: error code " +
                  std::to_string(EBADF),
              raisedBy([&] { socket.closeAll(); }));
    EXPECT_EQ(-1, socket.handle());
    socket.closeAll();
}

TEST(Socket, destructorWritesItsFailure)
{
    testing::internal::CaptureStderr();
    {
        Socket socket;
        socket.openListenPort(0);
        ::close(socket.handle());
    }
    EXPECT_EQ("Error closing socket: Socket::closeAll - closesocket call failed with error: "
              "error code " +
                  std::to_string(EBADF) + "\n",
              testing::internal::GetCapturedStderr());
}

TEST(Socket, waitsOnlyAtAListenPort)
{
    Socket socket;
    EXPECT_EQ("The listen port is not open.",
              raisedBy([&] { static_cast<void>(socket.waitForConnection(1s)); }));
    socket.openListenPort(0);
    EXPECT_EQ("Connection timeout after 1 seconds",
              raisedBy([&] { static_cast<void>(socket.waitForConnection(1s)); }));
}

TEST(Socket, saysThatNothingCouldBeAccepted)
{
    const Pair pair;
    send(*pair.client, "readable");
    EXPECT_EQ("Socket::waitForConnection - accept call failed with error: error in value",
              raisedBy([&] { static_cast<void>(pair.server->waitForConnection(patience)); }));
}

TEST(Socket, saysThatItCouldNotWait)
{
    Socket socket;
    socket.openListenPort(0);
    rlimit before{};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &before));
    rlimit none = before;
    none.rlim_cur = 0; // poll() refuses more descriptors than the limit
    ::setrlimit(RLIMIT_NOFILE, &none);
    const std::string text =
        raisedBy([&] { static_cast<void>(socket.waitForConnection(patience)); });
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ("Socket::waitForConnection - select call failed with error: error in value", text);
}

TEST(Socket, reportsThatNoDescriptorIsLeft)
{
    rlimit before{};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &before));
    rlimit none = before;
    none.rlim_cur = 3;
    ::setrlimit(RLIMIT_NOFILE, &none);
    const std::string text = raisedBy([] { const Socket socket("127.0.0.1", 1, 1); });
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ("Socket error: error code " + std::to_string(EMFILE), text);
}

TEST(Socket, saysThatAPortIsTaken)
{
    Socket first;
    first.openListenPort(0);
    Socket second;
    EXPECT_EQ("Socket error: error code " + std::to_string(EADDRINUSE),
              raisedBy([&] { second.openListenPort(first.port()); }));
}

TEST(Socket, knowsThisComputersName)
{
    char name[256] = {};
    ::gethostname(name, sizeof name - 1);
    EXPECT_EQ(name, Socket::localHostName());
}

TEST(SocketErrors, haveTextsByBothNumbers)
{
    const struct
    {
        int origin;
        int local;
        const char *text;
    } table[] = {
        {10014, EFAULT, "buffer fault"},
        {10022, EINVAL, "error in value"},
        {10035, EAGAIN, "receive operation would block"},
        {10038, ENOTSOCK, "not a socket"},
        {10040, EMSGSIZE, "message size is too large"},
        {10045, EOPNOTSUPP, "operation is not supported"},
        {10050, ENETDOWN, "network failure"},
        {10054, ECONNRESET, "connection reset"},
        {10054, EPIPE, "connection reset"}, // a broken pipe is a lost connection
        {10057, ENOTCONN, "socket not connected"},
        {10093, 10093, "not initialized"},
    };
    for (const auto &row : table) {
        EXPECT_EQ(row.text, socketErrorText(row.origin));
        EXPECT_EQ(row.text, socketErrorText(row.local));
    }
}

TEST(SocketErrors, haveOnlyANumberOtherwise)
{
    EXPECT_EQ("error code 0", socketErrorText(0));
    EXPECT_EQ("error code 10061", socketErrorText(10061));
    EXPECT_EQ("error code -2", socketErrorText(-2));
}

} // namespace velEditor
