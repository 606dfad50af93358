// Runs git and reads its output through a pipe.
#include "tools/veltool/git/gitProgram.h"

#include "common/spawnAttributes.h"

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace veltool {

namespace {

constexpr const char *program = "git";

/// A pipe that started programs do not inherit.
class Pipe
{
public:
    Pipe()
    {
        if (pipe2(ends_, O_CLOEXEC) != 0) {
            throw systemError(program, errno);
        }
    }

    ~Pipe()
    {
        close(ends_[0]);
        closeWriting();
    }

    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    [[nodiscard]] int writingEnd() const { return ends_[1]; }

    void closeWriting()
    {
        if (ends_[1] >= 0) {
            close(ends_[1]);
        }
        ends_[1] = -1;
    }

    /// Reads until the last writer has closed its end.
    [[nodiscard]] std::string readAll() const
    {
        std::string text;
        char block[4096];
        for (;;) {
            const ssize_t count = read(ends_[0], block, sizeof block);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return text;
            }
            text.append(block, static_cast<std::size_t>(count));
        }
    }

private:
    int ends_[2] = {-1, -1};
};

pid_t start(const Words &words, int output)
{
    std::vector<char *> arguments{const_cast<char *>(program)};
    for (const std::string &word : words) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    const velEditor::SpawnAttributes attributes;
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, program, &actions, attributes.get(), arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error) {
        throw systemError(program, error);
    }
    return child;
}

} // namespace

GitResult runGit(const Words &words)
{
    Pipe pipe;
    const pid_t child = start(words, pipe.writingEnd());
    pipe.closeWriting();
    GitResult result;
    result.out = pipe.readAll();
    int state = 0;
    while (waitpid(child, &state, 0) < 0) {
        if (errno != EINTR) {
            throw systemError(program, errno);
        }
    }
    constexpr int signalBase = 128;
    result.status = WIFEXITED(state) ? WEXITSTATUS(state) : signalBase + WTERMSIG(state);
    return result;
}

std::string requireGit(const Words &words)
{
    GitResult result = runGit(words);
    if (result.status != 0) {
        throw Failure("git " + words.front() + " failed with status " +
                      std::to_string(result.status));
    }
    return std::move(result.out);
}

} // namespace veltool
