// The program that the process tests start. Its first argument says what to do:
//   arguments        prints the other arguments, one per line
//   echo             copies standard input to standard output
//   write FD TEXT    writes TEXT to descriptor FD
//   inherits FD      prints whether the descriptor is open
//   signals          prints "default" or "other" for its handling of SIGPIPE and
//                    SIGXFSZ
//   sleep            does nothing for a minute
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace {

int printArguments(int count, char **words)
{
    for (int i = 2; i < count; ++i) {
        std::printf("%s\n", words[i]);
    }
    return 0;
}

int echo()
{
    for (int c = std::getchar(); c != EOF; c = std::getchar()) {
        std::putchar(c);
    }
    return 0;
}

int writeTo(int fd, const char *text)
{
    return ::write(fd, text, std::strlen(text)) < 0 ? 1 : 0;
}

int printSignals()
{
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        std::puts(action.sa_handler == SIG_DFL ? "default" : "other");
    }
    return 0;
}

} // namespace

int main(int count, char **words)
{
    const std::string_view task = count > 1 ? words[1] : "";
    if (task == "arguments") {
        return printArguments(count, words);
    }
    if (task == "echo") {
        return echo();
    }
    if (task == "write" && count == 4) {
        return writeTo(std::atoi(words[2]), words[3]);
    }
    if (task == "inherits" && count == 3) {
        return std::puts(::fcntl(std::atoi(words[2]), F_GETFD) < 0 ? "closed" : "open") < 0;
    }
    if (task == "signals") {
        return printSignals();
    }
    if (task == "sleep") {
        return static_cast<int>(::sleep(60));
    }
    return 2;
}
