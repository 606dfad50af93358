// Runs several programs that change one file at the same time.
#include "tools/veltool/tests/ownRules.h"

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace veltool::test {
namespace {

using Words = std::vector<std::string>;

/// A lock that the test has on a file.
class HeldLock
{
public:
    explicit HeldLock(const std::string &file) : descriptor_(open(file.c_str(), O_RDWR | O_CLOEXEC))
    {
        EXPECT_EQ(flock(descriptor_, LOCK_EX), 0);
    }
    ~HeldLock() { close(descriptor_); }
    HeldLock(const HeldLock &) = delete;
    HeldLock &operator=(const HeldLock &) = delete;

    /// Whether the system lists another program that waits for the lock.
    [[nodiscard]] static bool hasWaiter()
    {
        std::ifstream locks("/proc/locks");
        std::string own;
        for (std::string line; std::getline(locks, line);) {
            std::istringstream words(line);
            std::string number;
            std::string kind;
            std::string advisory;
            std::string access;
            std::string process;
            words >> number >> kind;
            if (kind == "->") {
                if (number == own) {
                    return true;
                }
                continue;
            }
            words >> advisory >> access >> process;
            if (kind == "FLOCK" && process == std::to_string(getpid())) {
                own = number;
            }
        }
        return false;
    }

private:
    int descriptor_;
};

class FileLockTest : public ::testing::Test
{
protected:
    /// Starts the command while the test has the lock of `a.vel`. When the
    /// command waits for the lock, the test replaces the file by one with other
    /// bytes, as another veltool would do, and unlocks it.
    ToolRun runWhileReplaced(const Words &words, const std::string &bytes)
    {
        auto lock = std::make_unique<HeldLock>(folder_.path("a.vel"));
        std::future<ToolRun> run =
            std::async(std::launch::async, [&words] { return runTool(words); });
        using namespace std::chrono_literals;
        for (int i = 0; i < 1000 && !HeldLock::hasWaiter(); ++i) {
            if (run.wait_for(10ms) == std::future_status::ready) {
                break;
            }
        }
        std::filesystem::rename(folder_.write("new.vel", bytes), folder_.path("a.vel"));
        lock.reset();
        return run.get();
    }

    OwnRules rules_{"RULES:\n  OBJECT: DOMAIN\n    Free Parameters = Yes\n  END\n"
                    "  Language Version = 2\n"
                    "  UPGRADE: Version 2\n"
                    "    STEP: new name\n"
                    "      Action = Rename Parameter\n"
                    "      Object Type = DOMAIN\n"
                    "      Parameter = old\n"
                    "      New Name = fresh\n"
                    "    END\n"
                    "  END\n"
                    "END\n"};
    TemporaryFolder folder_;
    const std::string before_ = "DOMAIN: d\n  a = 1\n  b = 1\nEND\n";
    const std::string meanwhile_ = "DOMAIN: d\n  a = 1\n  b = 2\nEND\n";
};

TEST_F(FileLockTest, EditsAtTheSameTimeAreAllKept)
{
    std::string text = "DOMAIN: d\n";
    std::string expected = "DOMAIN: d\n";
    for (int i = 0; i < 8; ++i) {
        text += "  p" + std::to_string(i) + " = old\n";
        expected += "  p" + std::to_string(i) + " = new\n";
    }
    const std::string file = folder_.write("a.vel", text + "END\n");
    std::vector<std::future<ToolRun>> runs;
    for (int i = 0; i < 8; ++i) {
        runs.push_back(std::async(std::launch::async, [&file, i] {
            return runTool({"set", file, "/DOMAIN:d/p" + std::to_string(i), "new"});
        }));
    }
    for (std::future<ToolRun> &run : runs) {
        EXPECT_EQ(run.get().status, 0);
    }
    EXPECT_EQ(folder_.read("a.vel"), expected + "END\n");
    EXPECT_EQ(folder_.names(), (Words{"a.vel", "a.vel.bak"}));
}

TEST_F(FileLockTest, EveryCommandThatWritesWaitsAndEditsWhatTheOtherWrote)
{
    const std::string file = folder_.path("a.vel");
    const struct
    {
        Words words;
        std::string result;
    } cases[] = {
        {{"set", file, "/DOMAIN:d/a", "3"}, "DOMAIN: d\n  a = 3\n  b = 2\nEND\n"},
        {{"add", file, "/DOMAIN:d/c", "3"}, "DOMAIN: d\n  a = 1\n  b = 2\n  c = 3\nEND\n"},
        {{"delete", file, "/DOMAIN:d/a"}, "DOMAIN: d\n  b = 2\nEND\n"},
    };
    for (const auto &each : cases) {
        folder_.write("a.vel", before_);
        const ToolRun run = runWhileReplaced(each.words, meanwhile_);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(folder_.read("a.vel"), each.result) << each.words[0];
        EXPECT_EQ(folder_.read("a.vel.bak"), meanwhile_) << each.words[0];
    }
    EXPECT_EQ(folder_.names(), (Words{"a.vel", "a.vel.bak"}));
}

TEST_F(FileLockTest, UpgradeAndFormatWaitToo)
{
    const std::string file = folder_.write("a.vel", "LANGUAGE:\n  Version = 1\nEND\n");
    const ToolRun upgrade =
        runWhileReplaced({"upgrade", file}, "LANGUAGE:\n  Version = 1\nEND\n"
                                            "DOMAIN: d\n  old = 1 # mine\nEND\n");
    EXPECT_EQ(upgrade.status, 0) << upgrade.err;
    EXPECT_EQ(folder_.read("a.vel"), "LANGUAGE:\n  Version = 2\nEND\n"
                                     "DOMAIN: d\n  fresh = 1 # mine\nEND\n");

    folder_.write("a.vel", before_);
    const ToolRun format = runWhileReplaced({"format", "--in-place", file}, "DOMAIN:   e\nEND\n");
    EXPECT_EQ(format.status, 0) << format.err;
    EXPECT_EQ(folder_.read("a.vel"), "DOMAIN: e\nEND\n");
}

TEST_F(FileLockTest, AMergeIntoOneOfItsFilesWaitsToo)
{
    const std::string ours = folder_.write("a.vel", before_);
    const std::string base = folder_.write("base.vel", before_);
    const std::string theirs = folder_.write("theirs.vel", "DOMAIN: d\n  a = 5\n  b = 1\nEND\n");
    const ToolRun run = runWhileReplaced({"merge", "-o", ours, base, ours, theirs}, meanwhile_);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(folder_.read("a.vel"), "DOMAIN: d\n  a = 5\n  b = 2\nEND\n");
}

TEST_F(FileLockTest, TheLockIsOnTheFileThatALinkLeadsTo)
{
    folder_.write("a.vel", before_);
    const std::string link = folder_.path("link.vel");
    std::filesystem::create_symlink("a.vel", link);
    const ToolRun run = runWhileReplaced({"set", link, "/DOMAIN:d/a", "3"}, meanwhile_);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(folder_.read("a.vel"), "DOMAIN: d\n  a = 3\n  b = 2\nEND\n");
}

TEST_F(FileLockTest, AFileThatIsDeletedDuringTheWaitIsReported)
{
    const std::string file = folder_.write("a.vel", before_);
    auto lock = std::make_unique<HeldLock>(file);
    std::future<ToolRun> run = std::async(std::launch::async, [&file] {
        return runTool({"set", file, "/DOMAIN:d/a", "3"});
    });
    using namespace std::chrono_literals;
    for (int i = 0; i < 1000 && !HeldLock::hasWaiter(); ++i) {
        std::this_thread::sleep_for(10ms);
    }
    std::filesystem::remove(file);
    lock.reset();
    const ToolRun result = run.get();
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "veltool: " + file + ": No such file or directory\n");
    EXPECT_TRUE(folder_.names().empty());
}

} // namespace
} // namespace veltool::test
