// findHolders: finds a child process of the test, and a process of another user.
#include "tools/veltool/ds/fileHolders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace veltool::test {
namespace {

class Holders : public ::testing::Test
{
protected:
    Holders()
    {
        if (mkdtemp(folder_.data()) == nullptr) {
            std::abort();
        }
        file_ = folder_ + "/held";
        std::ofstream(file_) << "held\n";
    }
    ~Holders() override { std::filesystem::remove_all(folder_); }

    /// The exit status of a child process that runs `look`.
    template <typename Look>
    static int inChild(Look look)
    {
        const pid_t child = fork();
        if (child == 0) {
            _exit(look());
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string folder_ = ::testing::TempDir() + "holders-XXXXXX";
    std::string file_;
};

TEST_F(Holders, AreTheOtherProcessesThatHaveTheFileOpen)
{
    if (!findHolders(file_).known) {
        GTEST_SKIP() << "this system does not show its processes";
    }
    EXPECT_TRUE(findHolders(file_).holders.empty());
    const std::ifstream held(file_);
    EXPECT_TRUE(findHolders(file_).holders.empty()) << "this process does not count";
    const long parent = getpid();
    EXPECT_EQ(inChild([&] {
                  close(STDIN_FILENO);
                  const FileHolders found = findHolders(file_);
                  return found.holders.size() == 1 && found.holders[0].process == parent &&
                         !found.holders[0].program.empty();
              }),
              1);
    EXPECT_TRUE(findHolders(file_ + "none").holders.empty());
}

/// The files of another user's process are hidden. The result then names the
/// user.
TEST_F(Holders, ThatCannotBeSeenAreReportedByTheirUser)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root may become another user";
    }
    constexpr unsigned nobody = 65534;
    std::filesystem::permissions(folder_, std::filesystem::perms::all);
    const std::ifstream held(file_);
    const int status = inChild([&] {
        if (setgid(nobody) != 0 || setuid(nobody) != 0) {
            return 4;
        }
        const FileHolders found = findHolders(file_);
        const auto &hidden = found.hiddenUsers;
        return (found.holders.empty() ? 1 : 0) |
               (std::count(hidden.begin(), hidden.end(), 0U) == 1 ? 2 : 0);
    });
    EXPECT_EQ(status, 3);
}

} // namespace
} // namespace veltool::test
