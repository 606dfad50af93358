// runGit, with a script in place of git that sends itself a signal.
#include "tools/veltool/git/gitProgram.h"

#include "common/writeSignals.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>

namespace veltool::test {
namespace {

/// Puts a script in place of git. The script sends itself the signal in its
/// argument.
class GitProgram : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(mkdtemp(folder_.data()), nullptr);
        const std::string git = folder_ + "/git";
        std::ofstream(git) << "#!/bin/sh\nkill -s \"$1\" $$\n";
        ASSERT_EQ(chmod(git.c_str(), 0755), 0);
        setenv("PATH", (folder_ + ':' + path_).c_str(), 1);
    }

    void TearDown() override
    {
        setenv("PATH", path_.c_str(), 1);
        std::filesystem::remove_all(folder_);
    }

private:
    std::string folder_ = (std::filesystem::temp_directory_path() / "git_test_XXXXXX").string();
    std::string path_ = std::getenv("PATH");
};

// veltool ignores the signals of failed writes. git must not inherit this.
TEST_F(GitProgram, HasTheDefaultActionsOfTheSignalsThatWeIgnore)
{
    velEditor::ignoreWriteSignals();
    EXPECT_EQ(runGit({"PIPE"}).status, 128 + SIGPIPE);
    EXPECT_EQ(runGit({"XFSZ"}).status, 128 + SIGXFSZ);
    velEditor::restoreWriteSignals();
}

TEST_F(GitProgram, DoesNotInheritBlockedSignals)
{
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
    EXPECT_EQ(runGit({"TERM"}).status, 128 + SIGTERM);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace
} // namespace veltool::test
