// Starts the viewer, connects to it and writes the commands.
#include "help/JavaHelpServer.h"

#include "common/error.h"
#include "help/HelpScreen.h"
#include "help/ProcessControl.h"
#include "help/Socket.h"
#include "help/helpEnvironment.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace velEditor {

namespace {

const bool helpDebugging = helpIsDebugged();

/// The path of the viewer, relative to the help directory.
constexpr char viewerSuffix[] = "\\..\\..\\HelpViewer\\OMBRAHelpViewer.exe";

/// The greatest size in bytes of the viewer's greeting (its port number),
/// including the end mark.
constexpr std::size_t greetingSize = 20;
/// A viewer prints its port first. If it prints nothing in this time, it has
/// failed.
constexpr std::chrono::seconds greetingLimit(20);
constexpr int connectAttempts = 5;

constexpr int standardOutput = 1;

/// Prints one step of the communication with the viewer, for debugging.
void trace(const std::string &line)
{
    if (helpDebugging) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    }
}

std::string applicationCode(const std::string &application)
{
    if (application == "DEFEditor") {
        return "ZOT";
    }
    std::fprintf(stderr,
                 "GUI: FATAL: JavaHelpServer does not recognize %s as valid KOA application.\n"
                 "Terminating...\n",
                 application.c_str());
    std::exit(-1);
}

/// The number at the start of a text (decimal, octal or hexadecimal as in C), if
/// it can be a port.
std::optional<unsigned short> parsePort(const std::string &text)
{
    char *end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 0);
    if (end == text.c_str() || number < 1 || number > 65535) {
        return std::nullopt;
    }
    return static_cast<unsigned short>(number);
}

const char *kindName(int kind)
{
    switch (static_cast<JavaHelpServer::Kind>(kind)) {
    case JavaHelpServer::Pdf:
        return "PDF";
    case JavaHelpServer::PlatformHelp:
        return "DH";
    case JavaHelpServer::RegularHelp:
        break;
    }
    return "regular"; // and for any other number
}

} // namespace

JavaHelpServer::JavaHelpServer(const std::string &application)
    : applicationCode_(applicationCode(application)), warning_(showHelpWarning)
{
    const HelpEnvironment environment = readHelpEnvironment();
    helpDirectory_ = environment.folder;
    language_ = environment.language;
    runtime_ = environment.runtime;
    trace("DH viewer executable=" + helpDirectory_ + viewerSuffix + ", Language=" + language_);
    trace("Mono executable=" + runtime_);
}

JavaHelpServer::~JavaHelpServer()
{
    JavaHelpServer::disconnect();
}

// The suffix has backslashes. On this platform, the whole suffix may be the name
// of one file; otherwise the backslashes are path separators.
std::string JavaHelpServer::viewerPath() const
{
    std::string path = helpDirectory_ + viewerSuffix;
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        std::replace(path.begin() + static_cast<std::ptrdiff_t>(helpDirectory_.size()), path.end(),
                     '\\', '/');
    }
    return path;
}

std::vector<std::string> JavaHelpServer::commandLine() const
{
    std::vector<std::string> words;
    if (!runtime_.empty()) {
        words.push_back(runtime_);
    }
    words.insert(words.end(),
                 {viewerPath(), "--language", language_, "--sessionID", helpSessionId()});
    return words;
}

JavaHelpServer::Greeting JavaHelpServer::startViewer()
{
    const std::vector<std::string> words = commandLine();
    std::string line = "DH Helpserver command line = \"";
    for (const std::string &word : words) {
        line += word + ' ';
    }
    trace(line + '"');

    viewer_ = ProcessControl::startProcess(words, &viewerPipe_, standardOutput, true);
    if (viewer_ == 0) {
        return {};
    }
    std::string text = ProcessControl::readOnce(viewerPipe_, greetingSize, greetingLimit);
    const bool tooLong = text.size() >= greetingSize;
    text.resize(std::min(text.size(), greetingSize - 1));
    return {true, text.c_str(), tooLong};
}

void JavaHelpServer::connectTo(unsigned short port)
{
    port_ = port;
    trace("DH Helpserver port number=" + std::to_string(port));
    socket_ = std::make_unique<Socket>(Socket::localHostName(), port, connectAttempts);
}

void JavaHelpServer::start()
{
    if (socket_ != nullptr) {
        return;
    }
    std::string failure;
    {
        const HelpWaitCursor wait;
        const Greeting greeting = startViewer();
        const auto port = greeting.tooLong ? std::nullopt : parsePort(greeting.text);
        if (!greeting.started) {
            failure = "Deskhall help server was not successfully started.";
        } else if (!port) {
            failure = "Deskhall help server was not successfully started.  Returned: '" +
                      greeting.text + "'";
        } else {
            try {
                connectTo(*port);
            } catch (const error &problem) {
                failure = "Error connecting to Deskhall help server: " + problem.message();
            }
        }
    }
    if (failure.empty()) {
        return;
    }
    ProcessControl::terminate(viewer_);
    forgetViewer();
    warn(failure);
}

void JavaHelpServer::showHelp(const std::string &topic, const std::string &section, int kind)
{
    trace(std::string("Displaying ") + kindName(kind) + " help for topic=" + topic +
          ", section=" + section);
    start();
    if (socket_ == nullptr) {
        return;
    }

    std::string command = kind == Pdf            ? "OMBRA:/pdf/"
                          : kind == PlatformHelp ? "DH2:file:"
                                                 : applicationCode_ + ":";
    command += topic;
    if (!section.empty()) {
        command += "#" + section;
    }
    command += "\n";
    trace("Help server command: " + command + " Length=" + std::to_string(command.size()));
    try {
        const HelpWaitCursor wait;
        send(command);
    } catch (const error &problem) {
        drop();
        warn(problem.message());
    }
}

void JavaHelpServer::send(const std::string &text)
{
    socket_->socketSend(text.data(), text.size());
}

// If "QUIT" cannot be sent, the viewer has already ended, so there is nothing to
// report.
void JavaHelpServer::disconnect()
{
    if (socket_ == nullptr) {
        return;
    }
    trace("Disconnecting from DH helpServer");
    try {
        const HelpWaitCursor wait;
        JavaHelpServer::send("QUIT\n");
    } catch (const error &problem) {
        trace(problem.message());
    }
    drop();
}

void JavaHelpServer::drop()
{
    socket_.reset();
    forgetViewer();
}

void JavaHelpServer::forgetViewer()
{
    ProcessControl::closePipe(viewerPipe_);
    ProcessControl::release(viewer_);
    viewerPipe_ = -1;
    viewer_ = 0;
}

void JavaHelpServer::warn(const std::string &text) const
{
    warning_("Warning", text);
}

} // namespace velEditor
