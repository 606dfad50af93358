// veltool recover: what a crash of the editor has left unsaved, without a display.
#include "tools/veltool/tests/toolRun.h"
#include "veltext/journalFile.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <optional>

#include <unistd.h>

namespace veltool::test {
namespace {

using nlohmann::json;
using veltext::Edit;

const std::string base = "A:\n  x = 1   # one\n  y = 1\nEND\n";
const std::string wanted = "A:\n  x = 3   # one\n  y = 1\nEND\n";

class RecoverCommandTest : public testing::Test
{
protected:
    RecoverCommandTest() { ::setenv("XDG_STATE_HOME", folder_.path("state").c_str(), 1); }
    ~RecoverCommandTest() override
    {
        before_ ? ::setenv("XDG_STATE_HOME", before_->c_str(), 1) : ::unsetenv("XDG_STATE_HOME");
    }

    static std::optional<std::string> stateHome()
    {
        const char *value = std::getenv("XDG_STATE_HOME");
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    }

    /// Sets a parameter in a new journal.
    [[nodiscard]] veltext::JournalWriter
    newJournal(const std::string &path, const std::string &value, std::int64_t time = 1) const
    {
        return {veltext::journalFolder(),
                veltext::newHead(file_, base, false),
                base,
                {time, 1, veltext::settingValue(path, value)}};
    }

    /// The journal of an editor that was killed when it had set x to 2 and 3.
    void crash() const
    {
        veltext::JournalWriter writer = newJournal("/A/x", "2");
        writer.append({2, 2, veltext::settingValue("/A/x", "3")});
    }

    [[nodiscard]] bool hasJournal() const
    {
        std::vector<std::string> faults;
        return !veltext::leftJournals(veltext::journalFolder(), file_, &faults).empty();
    }

    const std::optional<std::string> before_ = stateHome();
    const TemporaryFolder folder_;
    const std::string file_ = folder_.write("a.vel", base);
};

TEST_F(RecoverCommandTest, HasNothingToRecoverAtFirst)
{
    const ToolRun run = runTool({"recover", file_});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "veltool: " + file_ + ": there are no unsaved changes\n");
    const ToolRun dry = runTool({"recover", "--dry-run", file_});
    EXPECT_EQ(dry.status, 0);
    EXPECT_EQ(dry.out + dry.err, "");
    EXPECT_EQ(runTool({"recover", "--dry-run", "--json", file_}).out, "[]\n");
    EXPECT_EQ(runTool({"recover", "--discard", file_}).status, 1);
    EXPECT_EQ(runTool({"recover", folder_.path("b.vel")}).status, 2);
    EXPECT_EQ(folder_.read("a.vel"), base);
    EXPECT_FALSE(folder_.has("a.vel.bak"));
}

TEST_F(RecoverCommandTest, WritesTheFileAndKeepsTheFormerOne)
{
    crash();
    const ToolRun run = runTool({"recover", file_});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(folder_.read("a.vel"), wanted);
    EXPECT_EQ(folder_.read("a.vel.bak"), base);
    EXPECT_EQ(runTool({"history", file_, "--show", "1"}).out, base);
    EXPECT_FALSE(hasJournal());
    EXPECT_EQ(runTool({"recover", file_}).status, 1);
    crash();
    EXPECT_EQ(runTool({"recover", file_}).status, 1); // the file has it
    EXPECT_FALSE(hasJournal());
}

TEST_F(RecoverCommandTest, ShowsWhatWouldChange)
{
    crash();
    const ToolRun run = runTool({"recover", "--dry-run", file_});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "~ /A/x = 1 -> 3\n");
    EXPECT_EQ(json::parse(runTool({"recover", "--dry-run", "--json", file_}).out),
              json::parse(R"([{"path":"/A/x","kind":"changed","old":"1","new":"3"}])"));
    EXPECT_EQ(folder_.read("a.vel"), base);
    EXPECT_TRUE(hasJournal());
}

TEST_F(RecoverCommandTest, WritesAnotherFile)
{
    crash();
    const std::string out = folder_.path("out.vel");
    EXPECT_EQ(runTool({"recover", file_, "-o", out}).status, 0);
    EXPECT_EQ(folder_.read("out.vel"), wanted);
    EXPECT_EQ(folder_.read("a.vel"), base);
    EXPECT_TRUE(hasJournal());
}

TEST_F(RecoverCommandTest, ForgetsWhatIsNotWanted)
{
    crash();
    EXPECT_EQ(runTool({"recover", "--discard", file_}).status, 0);
    EXPECT_FALSE(hasJournal());
    EXPECT_EQ(folder_.read("a.vel"), base);
}

TEST_F(RecoverCommandTest, MergesAndKeepsWhatTheFileHas)
{
    crash();
    (void)newJournal("/A/y", "5", 9);
    folder_.write("a.vel", "A:\n  x = 7\n  y = 1\nEND\n");
    const ToolRun run = runTool({"recover", file_});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(folder_.read("a.vel"), "A:\n  x = 7\n  y = 5\nEND\n");
    EXPECT_EQ(run.err, "veltool: " + file_ +
                           ": /A/x: has changed in the file too, which keeps \"7\"; the unsaved "
                           "value is \"3\"\nveltool: " +
                           file_ +
                           ": not everything was recovered; the unsaved changes are kept until you "
                           "use --discard\n");
    EXPECT_TRUE(hasJournal());
}

TEST_F(RecoverCommandTest, WritesAFileThatIsGone)
{
    crash();
    std::filesystem::remove(file_);
    EXPECT_EQ(runTool({"recover", "--dry-run", file_}).status, 1);
    EXPECT_EQ(runTool({"recover", file_}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), wanted);
}

TEST_F(RecoverCommandTest, LeavesARunningEditorAlone)
{
    const veltext::JournalWriter writer = newJournal("/A/x", "2");
    const veltext::Journal journal = veltext::journalsInUse(veltext::journalFolder(), file_).at(0);
    const std::string message = "veltool: " + file_ + ": process " + std::to_string(getpid()) +
                                " on " + journal.head.host +
                                " is editing the file; its changes are left alone\n";
    for (const char *option : {"--no-backup", "--discard"}) {
        const ToolRun run = runTool({"recover", option, file_});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, message);
        EXPECT_EQ(folder_.read("a.vel"), base);
    }
    EXPECT_EQ(runTool({"recover", "--dry-run", file_}).status, 0);
    EXPECT_EQ(veltext::journalsInUse(veltext::journalFolder(), file_).size(), 1U);
}

TEST_F(RecoverCommandTest, UsesTheIntactPartOfADamagedJournal)
{
    crash();
    ASSERT_EQ(runShell("f=$(echo $XDG_STATE_HOME/veleditor/journal/a.vel-*); "
                       "printf x | dd of=\"$f\" bs=1 conv=notrunc "
                       "seek=$(($(wc -c <\"$f\") - 7))")
                  .status,
              0);
    const ToolRun run = runTool({"recover", file_});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(folder_.read("a.vel"), "A:\n  x = 2   # one\n  y = 1\nEND\n");
    EXPECT_NE(run.err.find(" bytes are damaged\n"), std::string::npos) << run.err;
    EXPECT_TRUE(hasJournal());
}

TEST_F(RecoverCommandTest, RefusesWhatDoesNotGoTogether)
{
    for (const std::vector<std::string> &words : std::vector<std::vector<std::string>>{
             {"recover", "-"},
             {"recover", "--json", file_},
             {"recover", "--dry-run", "--discard", file_},
             {"recover", "--dry-run", "-o", "x", file_},
             {"recover", "--discard", "-o", "x", file_},
         }) {
        EXPECT_EQ(runTool(words).status, 2);
    }
}

} // namespace
} // namespace veltool::test
