// Takes the place of the help viewer in tests of its client. It logs to the file
// HELP_DOUBLE_LOG, one line each: the start with all arguments, each command
// received, the end. HELP_DOUBLE says how it behaves:
//   (unset)     like the real viewer
//   say TEXT    prints TEXT instead of a port, and keeps running
//   leave       ends after one command
//   half        shuts down its sending half once it is connected
//   silent      prints nothing, and keeps running
#include "common/error.h"
#include "help/Socket.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <sys/socket.h>
#include <unistd.h>

namespace {

void note(const std::string &line)
{
    const char *name = std::getenv("HELP_DOUBLE_LOG");
    std::FILE *file = name != nullptr ? std::fopen(name, "a") : nullptr;
    if (file == nullptr) {
        return;
    }
    std::fputs((line + "\n").c_str(), file);
    std::fclose(file);
}

void say(const std::string &text)
{
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

/// Waits for a minute, or until the test that has started it ends.
void lingerWithParent()
{
    const pid_t parent = ::getppid();
    for (int i = 0; i < 600 && ::getppid() == parent; ++i) {
        ::usleep(100'000);
    }
}

/// The next line without its line end; empty at the end of the connection.
std::string receiveLine(velEditor::Socket &connection)
{
    std::string line;
    for (;;) {
        const std::string byte = connection.socketRecv(1);
        if (byte.empty() || byte == "\n") {
            return line;
        }
        line += byte;
    }
}

void serve(const std::string &conduct)
{
    velEditor::Socket listener;
    listener.openListenPort(0);
    say(std::to_string(listener.port()) + "\n");
    const auto connection = listener.waitForConnection(std::chrono::seconds(60));
    if (conduct == "half") {
        ::shutdown(connection->handle(), SHUT_WR);
    }
    for (;;) {
        const std::string line = receiveLine(*connection);
        if (!line.empty()) {
            note("got " + line);
        }
        if (line.empty() || line == "QUIT" || conduct == "leave") {
            return;
        }
    }
}

} // namespace

int main(int count, char **words)
{
    std::string start = "started";
    for (int i = 1; i < count; ++i) {
        start += std::string(" '") + words[i] + "'";
    }
    note(start);

    const char *variable = std::getenv("HELP_DOUBLE");
    const std::string conduct = variable != nullptr ? variable : "";
    if (conduct.substr(0, 4) == "say ") {
        say(conduct.substr(4));
        if (conduct.size() > 4) {
            lingerWithParent();
        }
        return 0;
    }
    if (conduct == "silent") {
        lingerWithParent();
        return 0;
    }
    try {
        serve(conduct);
    } catch (const velEditor::error &failure) {
        note(failure.message());
    }
    note("ended");
    return 0;
}
