// Tests child processes: arguments, pipes, signals, failures and zombies.
#include "help/ProcessControl.h"

#include "common/writeSignals.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velEditor {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;

std::vector<std::string> child(std::vector<std::string> words)
{
    words.insert(words.begin(), HELP_TEST_CHILD);
    return words;
}

/// Everything written to a pipe until its other end is closed.
std::string readAll(int fd)
{
    std::string all;
    for (;;) {
        const std::string part = ProcessControl::readOnce(fd, 100, patience);
        if (part.empty()) {
            return all;
        }
        all += part;
    }
}

/// The standard output of a child started with these arguments.
std::string outputOf(const std::vector<std::string> &words, bool noInherit = false)
{
    int fd = -1;
    const int process = ProcessControl::startProcess(child(words), &fd, 1, noInherit);
    if (process == 0) {
        return "not started";
    }
    std::string output = readAll(fd);
    ProcessControl::closePipe(fd);
    ::waitpid(process, nullptr, 0);
    return output;
}

/// The message of a start that fails. `fd` must not change.
std::string complaintOf(const std::vector<std::string> &words, int stream)
{
    int fd = -77;
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, ProcessControl::startProcess(words, &fd, stream, true));
    EXPECT_EQ(-77, fd);
    return testing::internal::GetCapturedStderr();
}

/// Waits until the system has no entry for the process any more.
bool isForgotten(int process)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < end) {
        ProcessControl::release(0);
        if (::kill(process, 0) != 0) {
            return true;
        }
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

} // namespace

TEST(ProcessControl, passesArgumentsUnchanged)
{
    EXPECT_EQ(
        "--language\nen us\n\n\"quoted\" $HOME\nfiledescriptor\n",
        outputOf({"arguments", "--language", "en us", "", "\"quoted\" $HOME", "filedescriptor"}));
}

TEST(ProcessControl, passesTheChildItsDescriptor)
{
    EXPECT_EQ("through the pipe", outputOf({"write", "filedesc", "through the pipe"}));
}

TEST(ProcessControl, replacesEveryFiledesc)
{
    const std::string output = outputOf({"arguments", "filedesc", "x", "filedesc"});
    const int number = std::atoi(output.c_str());
    EXPECT_GT(number, 2);
    EXPECT_EQ(std::to_string(number) + "\nx\n" + std::to_string(number) + "\n", output);
}

TEST(ProcessControl, hidesThePipeFromChildrenOnRequest)
{
    EXPECT_EQ("open\n", outputOf({"inherits", "filedesc"}, false));
    EXPECT_EQ("closed\n", outputOf({"inherits", "filedesc"}, true));
}

TEST(ProcessControl, joinsStandardInput)
{
    int fd = -1;
    const int process = ProcessControl::startProcess(
        {"/bin/sh", "-c", "read line; test \"$line\" = hello"}, &fd, 0, false);
    ASSERT_NE(0, process);
    ASSERT_EQ(6, ::write(fd, "hello\n", 6));
    ProcessControl::closePipe(fd);
    int status = -1;
    ASSERT_EQ(process, ::waitpid(process, &status, 0));
    EXPECT_EQ(0, status);
}

TEST(ProcessControl, endsTheChildsInputWithThePipe)
{
    int fd = -1;
    const int process = ProcessControl::startProcess(child({"echo"}), &fd, 0, false);
    ASSERT_NE(0, process);
    ProcessControl::closePipe(fd);
    EXPECT_EQ(process, ::waitpid(process, nullptr, 0));
}

TEST(ProcessControl, doesNotChangeTheParentsStreams)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ("word\n", outputOf({"arguments", "word"}));
    std::printf("still here");
    EXPECT_EQ("still here", testing::internal::GetCapturedStdout());
}

// Our programs ignore the signals of failed writes; their children do not.
TEST(ProcessControl, startsChildrenWithOrdinarySignals)
{
    ignoreWriteSignals();
    EXPECT_EQ("default\ndefault\n", outputOf({"signals"}));
    restoreWriteSignals();
}

TEST(ProcessControl, givesForkedChildrenOrdinarySignals)
{
    ignoreWriteSignals();
    const pid_t process = ::fork();
    if (process == 0) {
        ::raise(SIGXFSZ);
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(process, ::waitpid(process, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
    EXPECT_EQ(0, ::raise(SIGXFSZ)); // ignored here
    restoreWriteSignals();
}

TEST(ProcessControl, needsArguments)
{
    EXPECT_EQ("ProcessControl::startProcess: not enough arguments\n", complaintOf({}, 1));
}

TEST(ProcessControl, acceptsOnlyTwoStreams)
{
    const std::string complaint = "ProcessControl::startProcess: error in argument p_fd\n";
    EXPECT_EQ(complaint, complaintOf(child({"echo"}), 2));
    EXPECT_EQ(complaint, complaintOf(child({"echo"}), -1));
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, ProcessControl::startProcess(child({"echo"}), nullptr, 1, true));
    EXPECT_EQ(complaint, testing::internal::GetCapturedStderr());
}

TEST(ProcessControl, reportsAMissingProgram)
{
    EXPECT_EQ("ProcessControl::startProcess: _spawnvp(/nowhere/viewer) - "
              "No such file or directory\n",
              complaintOf({"/nowhere/viewer", "x"}, 1));
}

TEST(ProcessControl, reportsAMissingPipe)
{
    rlimit before{};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &before));
    int fd = -77;
    testing::internal::CaptureStderr();
    rlimit none = before;
    none.rlim_cur = 3;
    ::setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_EQ(0, ProcessControl::startProcess(child({"echo"}), &fd, 1, true));
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ("ProcessControl::startProcess: _pipe() error -Too many open files\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(-77, fd);
}

TEST(ProcessControl, doesNotWaitForeverForOutput)
{
    int fd = -1;
    const int process = ProcessControl::startProcess(child({"sleep"}), &fd, 1, true);
    ASSERT_NE(0, process);
    EXPECT_EQ("", ProcessControl::readOnce(fd, 20, 50ms));
    ProcessControl::closePipe(fd);
    ProcessControl::terminate(process);
    ProcessControl::release(process);
    EXPECT_TRUE(isForgotten(process));
}

TEST(ProcessControl, leavesNoZombies)
{
    int fd = -1;
    const int process = ProcessControl::startProcess(child({"arguments"}), &fd, 1, true);
    ASSERT_NE(0, process);
    EXPECT_EQ("", readAll(fd));
    ProcessControl::closePipe(fd);
    EXPECT_EQ(0, ::kill(process, 0));
    ProcessControl::release(process);
    EXPECT_TRUE(isForgotten(process));
}

} // namespace velEditor
