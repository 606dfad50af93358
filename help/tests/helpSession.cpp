// Uses the help client from the command line. The first argument is the name of
// the application. Each other argument is "TOPIC|SECTION|KIND" or "disconnect".
// Prints warnings. Tests compare the output, with KOA_DEBUG_HELP in the
// environment.
#include "help/JavaHelpServer.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

void show(velEditor::JavaHelpServer &server, const std::string &request)
{
    const std::size_t first = request.find('|');
    const std::size_t second = request.find('|', first + 1);
    server.showHelp(request.substr(0, first), request.substr(first + 1, second - first - 1),
                    std::atoi(request.substr(second + 1).c_str()));
}

} // namespace

int main(int count, char **words)
{
    if (count < 2) {
        return 2;
    }
    velEditor::JavaHelpServer server(words[1]);
    server.setWarning([](const std::string &title, const std::string &text) {
        std::printf("[%s] %s\n", title.c_str(), text.c_str());
    });
    for (int i = 2; i < count; ++i) {
        if (std::string(words[i]) == "disconnect") {
            server.disconnect();
        } else {
            show(server, words[i]);
        }
    }
    return 0;
}
