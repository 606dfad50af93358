// The client of the help viewer. It starts the viewer on first use and sends it
// the topics to show, one line of text per command (docs/help-protocol.md).
//
// One viewer and one connection serve all requests. If the viewer has ended, the
// next request reports that and fails; the request after it starts a new viewer.
// Only `send` raises; all other failures are shown in a warning box. GUI thread
// only. A request blocks, with the wait cursor, until the viewer has started and
// has received the command.
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
    /// Kinds of help for `showHelp`; any other number means regular help.
    enum Kind : int { Pdf = 0, PlatformHelp = 1, RegularHelp = 2 };

    /// Receives the title and the text of a warning.
    using Warning = std::function<void(const std::string &, const std::string &)>;

    /// `application` is the name of the program; only "DEFEditor" is known. Any
    /// other name ends the process with status −1, after a message on the error
    /// stream. Reads the environment (`readHelpEnvironment`).
    explicit JavaHelpServer(const std::string &application);

    /// Disconnects.
    virtual ~JavaHelpServer();

    JavaHelpServer(const JavaHelpServer &) = delete;
    JavaHelpServer &operator=(const JavaHelpServer &) = delete;

    /// Starts the viewer and connects to it; does nothing while connected.
    virtual void start();

    /// Sends "QUIT\n" if the viewer still runs, and closes the connection.
    virtual void disconnect();

    /// Shows a topic. With an empty topic the viewer chooses the page; `section`
    /// may be empty.
    virtual void showHelp(const std::string &topic, const std::string &section, int kind);

    /// Writes a command to the viewer; needs a connection. Raises
    /// `velEditor::error`, after which the connection is still there.
    virtual void send(const std::string &text);

    [[nodiscard]] bool isConnected() const { return socket_ != nullptr; }
    /// The port of the last connection, 0 before the first one.
    [[nodiscard]] int port() const { return port_; }

    /// Passes warnings to a function instead of showing them in a box.
    void setWarning(Warning warning) { warning_ = std::move(warning); }

private:
    [[nodiscard]] std::string viewerPath() const;
    [[nodiscard]] std::vector<std::string> commandLine() const;
    /// What the viewer prints when it has started.
    struct Greeting
    {
        bool started = false;
        std::string text;     ///< the beginning of its output
        bool tooLong = false; ///< it printed more than a port number
    };
    [[nodiscard]] Greeting startViewer();
    void connectTo(unsigned short port);
    void drop();
    void forgetViewer();
    void warn(const std::string &text) const;

    std::string helpDirectory_;
    std::string language_;
    std::string runtime_; ///< program that runs the viewer; empty: none is needed
    int port_ = 0;
    std::unique_ptr<Socket> socket_; ///< null while not connected
    std::string applicationCode_;    ///< prefix of this program's topics

    int viewer_ = 0;      ///< process identifier, 0 while there is none
    int viewerPipe_ = -1; ///< the viewer's standard output; open so that it can write
    Warning warning_;
};

} // namespace velEditor
