// Runs programs and reads their output from files in a new folder.
#include "tools/veltool/tests/toolRun.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace veltool::test {

namespace {

std::string readFile(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string program()
{
    const char *build = std::getenv("VEL_BUILD_DIR");
    if (build == nullptr) {
        throw std::runtime_error("VEL_BUILD_DIR is not set");
    }
    return std::string(build) + "/bin/veltool";
}

ToolRun runProgram(std::vector<std::string> words, const std::string &input)
{
    const TemporaryFolder folder;
    const std::string in = folder.write("in", input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, folder.path("out").c_str(),
                                     O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, folder.path("err").c_str(),
                                     O_WRONLY | O_CREAT, 0600);
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);

    pid_t child = 0;
    const int failed =
        posix_spawn(&child, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int state = 0;
    if (failed || waitpid(child, &state, 0) != child) {
        throw std::runtime_error(words[0] + " could not be run");
    }
    const int status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
    return {status, folder.read("out"), folder.read("err")};
}

} // namespace

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "veltool-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    folder_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
}

std::string TemporaryFolder::path(const std::string &name) const
{
    return name.empty() ? folder_.string() : (folder_ / name).string();
}

std::string TemporaryFolder::write(const std::string &name, const std::string &bytes) const
{
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

std::string TemporaryFolder::read(const std::string &name) const
{
    return readFile(path(name));
}

bool TemporaryFolder::has(const std::string &name) const
{
    return std::filesystem::exists(folder_ / name);
}

std::vector<std::string> TemporaryFolder::names() const
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

ToolRun runTool(const std::vector<std::string> &words, const std::string &input)
{
    std::vector<std::string> all{program()};
    all.insert(all.end(), words.begin(), words.end());
    return runProgram(std::move(all), input);
}

ToolRun runShell(const std::string &line)
{
    setenv("VELTOOL", program().c_str(), 1);
    return runProgram({"/bin/bash", "-c", line}, {});
}

bool hasTerminals()
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0) {
        return false;
    }
    const char *name = ::unlockpt(master) == 0 ? ::ptsname(master) : nullptr;
    const bool exists = name != nullptr && ::access(name, R_OK | W_OK) == 0;
    ::close(master);
    return exists;
}

} // namespace veltool::test
