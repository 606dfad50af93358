// Child processes and their pipes, with POSIX calls.
#include "help/ProcessControl.h"

#include "common/spawnAttributes.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace velEditor {

namespace {

constexpr int noProcess = 0;

int fail(const std::string &text)
{
    std::fprintf(stderr, "ProcessControl::startProcess: %s\n", text.c_str());
    return noProcess;
}

std::string reason(int code)
{
    return std::strerror(code);
}

/// The two ends of a pipe, by the process that uses them.
struct Pipe
{
    int child = -1;
    int parent = -1;
};

// No child inherits an end by default: each child gets its own end explicitly.
int openPipe(int stream, Pipe &pipe)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    pipe.child = ends[stream];
    pipe.parent = ends[1 - stream];
    return 0;
}

/// The steps in the child before the program starts.
class FileActions
{
public:
    FileActions() { ::posix_spawn_file_actions_init(&actions_); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;

    /// Returns an error code. With `from` equal to `to` the descriptor becomes
    /// inheritable.
    int duplicate(int from, int to)
    {
        return ::posix_spawn_file_actions_adddup2(&actions_, from, to);
    }

    [[nodiscard]] const posix_spawn_file_actions_t *get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

std::vector<std::string> withDescriptor(std::vector<std::string> arguments, int descriptor)
{
    std::replace(arguments.begin(), arguments.end(), std::string("filedesc"),
                 std::to_string(descriptor));
    return arguments;
}

/// The child's process identifier; `noProcess`, with a message, on failure.
int spawn(std::vector<std::string> arguments, const FileActions &actions)
{
    std::vector<char *> words;
    words.reserve(arguments.size() + 1);
    for (std::string &argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);

    const SpawnAttributes attributes;
    pid_t process = noProcess;
    if (const int error = ::posix_spawnp(&process, words.front(), actions.get(), attributes.get(),
                                         words.data(), environ)) {
        return fail("_spawnvp(" + arguments.front() + ") - " + reason(error));
    }
    return process;
}

/// Children that were released before they had ended.
std::vector<int> &released()
{
    static std::vector<int> processes;
    return processes;
}

bool hasEnded(int process)
{
    return ::waitpid(process, nullptr, WNOHANG) != 0;
}

void collectReleased()
{
    std::erase_if(released(), hasEnded);
}

} // namespace

int ProcessControl::startProcess(const std::vector<std::string> &arguments, int *p_fd, int stream,
                                 bool noInherit)
{
    collectReleased();
    if (arguments.empty()) {
        return fail("not enough arguments");
    }
    if (p_fd == nullptr || stream < 0 || stream > 1) {
        return fail("error in argument p_fd");
    }

    Pipe pipe;
    if (const int error = openPipe(stream, pipe)) {
        return fail("_pipe() error -" + reason(error));
    }

    FileActions actions;
    int error = actions.duplicate(pipe.child, stream);
    if (error == 0 && !noInherit && pipe.child != stream) {
        error = actions.duplicate(pipe.child, pipe.child);
    }
    const int process = error == 0 ? spawn(withDescriptor(arguments, pipe.child), actions)
                                   : fail("_dup2() error - " + reason(error));
    closePipe(pipe.child);
    if (process == noProcess) {
        closePipe(pipe.parent);
    } else {
        *p_fd = pipe.parent;
    }
    return process;
}

std::string ProcessControl::readOnce(int fd, std::size_t size, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        pollfd readable{fd, POLLIN, 0};
        const int ready =
            ::poll(&readable, 1, static_cast<int>(std::max(left.count(), decltype(left)::rep{0})));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return {};
        }
        std::string text(size, '\0');
        const ssize_t count = ::read(fd, text.data(), size);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }
}

void ProcessControl::closePipe(int fd)
{
    if (fd >= 0) {
        ::close(fd);
    }
}

void ProcessControl::terminate(int process)
{
    if (process > noProcess) {
        ::kill(process, SIGTERM);
    }
}

void ProcessControl::release(int process)
{
    if (process > noProcess) {
        released().push_back(process);
    }
    collectReleased();
}

} // namespace velEditor
