// runGit, with a script in place of git that raises the signals that we ignore.
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

// veltool ignores the signals of failed writes; git must not inherit that.
TEST(GitProgram, HasTheDefaultActionsOfTheSignalsThatWeIgnore)
{
    std::string folder = (std::filesystem::temp_directory_path() / "git_test_XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string git = folder + "/git";
    std::ofstream(git) << "#!/bin/sh\nkill -s \"$1\" $$\n";
    ASSERT_EQ(chmod(git.c_str(), 0755), 0);
    const std::string path = std::getenv("PATH");
    setenv("PATH", (folder + ':' + path).c_str(), 1);

    velEditor::ignoreWriteSignals();
    EXPECT_EQ(runGit({"PIPE"}).status, 128 + SIGPIPE);
    EXPECT_EQ(runGit({"XFSZ"}).status, 128 + SIGXFSZ);
    velEditor::restoreWriteSignals();

    setenv("PATH", path.c_str(), 1);
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace veltool::test
