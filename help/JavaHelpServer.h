// The client of the help viewer: starts it on first use and tells it which
// topics to show, one line of text a command (docs/help-protocol.md).
//
// One viewer and one connection serve all requests. A viewer that has gone is
// noticed by the next request, which reports it and fails; the one after that
// starts a new viewer. Nothing here raises except `send`: failures are shown in
// a warning box. GUI thread only; a request blocks, under the wait cursor,
// while the viewer starts and until it has taken what is sent.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velEditor {

class Socket;

class JavaHelpServer
{
public:
    /// Kinds of help, as `showHelp` takes them; any other number is regular.
    enum Kind { Pdf = 0, PlatformHelp = 1, RegularHelp = 2 };

    /// Takes the title and the text of a warning.
    using Warning = std::function<void(const std::string &, const std::string &)>;

    /// `application` names the program; only "DEFEditor" is known. Any other
    /// name ends the process with status −1, after a message on the error
    /// stream. Reads ZOT_HELP_DIR, KOA_TEST_HELP_DIR (which overrides it),
    /// ZOT5MONO and QRP_LOCALE150.
    explicit JavaHelpServer(const std::string &application);

    /// Disconnects.
    virtual ~JavaHelpServer();

    JavaHelpServer(const JavaHelpServer &) = delete;
    JavaHelpServer &operator=(const JavaHelpServer &) = delete;

    /// Starts the viewer and connects to it; does nothing while connected.
    virtual void start();

    /// Sends "QUIT\n", as far as anyone is there to take it, and drops the
    /// connection.
    virtual void disconnect();

    /// Shows a topic. An empty topic leaves the choice to the viewer; `section`
    /// may be empty.
    virtual void showHelp(const std::string &topic, const std::string &section, int kind);

    /// Writes a command to the viewer; needs a connection. Raises
    /// `velEditor::error`, after which the connection is still there.
    virtual void send(const std::string &text);

    [[nodiscard]] bool isConnected() const { return socket_ != nullptr; }
    /// The port of the viewer last connected to, 0 before.
    [[nodiscard]] int port() const { return port_; }

    /// Has warnings handed to a function instead of being shown in a box of
    /// this library.
    void setWarning(Warning warning) { warning_ = std::move(warning); }

private:
    [[nodiscard]] std::string viewerPath() const;
    [[nodiscard]] std::vector<std::string> commandLine() const;
    /// What the viewer says of itself when it has been started.
    struct Greeting
    {
        bool started = false;
        std::string text;     ///< its first words
        bool tooLong = false; ///< it said more than a port number
    };
    [[nodiscard]] Greeting startViewer();
    void connectTo(unsigned short port);
    void drop();
    void forgetViewer();
    void warn(const std::string &text) const;

    std::string helpDirectory_;
    std::string language_;
    std::string runtime_; ///< runs the viewer; empty: it runs by itself
    int port_ = 0;
    std::unique_ptr<Socket> socket_; ///< null while not connected
    std::string applicationCode_;    ///< the namespace of this program's topics

    int viewer_ = 0;      ///< its process, 0 while there is none
    int viewerPipe_ = -1; ///< its standard output; kept open so that it may write
    Warning warning_;
};

} // namespace velEditor
