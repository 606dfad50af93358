// veltool history, and what the commands that replace a file leave in the history
// and next to the file. Each test has its own state folder.
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

namespace veltool::test {
namespace {

using Names = std::vector<std::string>;
using nlohmann::json;

const std::string first = "A:\n  x = 1   # one\nEND\n";
const std::string second = "A:\n  x = 2   # one\nEND\n";

class HistoryCommandTest : public testing::Test
{
protected:
    HistoryCommandTest()
    {
        ::setenv("XDG_STATE_HOME", folder_.path("state").c_str(), 1);
        ::setenv("TZ", "UTC", 1);
    }
    ~HistoryCommandTest() override
    {
        ::unsetenv("TZ");
        before_ ? ::setenv("XDG_STATE_HOME", before_->c_str(), 1) : ::unsetenv("XDG_STATE_HOME");
    }

    void set(const std::string &value) const
    {
        const ToolRun run = runTool({"set", "--force", file_, "/A/x", value});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
    }

    [[nodiscard]] json list() const
    {
        const ToolRun run = runTool({"history", "--json", file_});
        EXPECT_EQ(run.status, 0) << run.err;
        return json::parse(run.out);
    }

    /// The content of the newest version of the file.
    [[nodiscard]] std::string newest() const
    {
        return runTool({"history", file_, "--show", "1"}).out;
    }

    static std::optional<std::string> stateHome()
    {
        const char *value = std::getenv("XDG_STATE_HOME");
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    }

    const std::optional<std::string> before_ = stateHome();
    const TemporaryFolder folder_;
    const std::string file_ = folder_.write("a.vel", first);
};

TEST_F(HistoryCommandTest, ListsNoVersionsAtFirst)
{
    EXPECT_EQ(runTool({"history", file_}).out, "");
    EXPECT_EQ(list(), json::array());
    const ToolRun missing = runTool({"history", folder_.path("b.vel")});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "veltool: " + folder_.path("b.vel") + ": No such file or directory\n");
}

TEST_F(HistoryCommandTest, ListsTheNewestFirst)
{
    set("2");
    set("3");
    const json versions = list();
    ASSERT_EQ(versions.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(versions[i].size(), 5U);
        EXPECT_EQ(versions[i]["n"], i + 1);
        EXPECT_EQ(versions[i]["size"], first.size());
        EXPECT_EQ(versions[i]["changes"], 1);
        EXPECT_EQ(versions[i]["program"], "veltool");
        const std::string time = versions[i]["time"];
        EXPECT_EQ(time.size(), std::string("2026-11-22T04:00:00Z").size()) << time;
    }
    // The same output for people.
    std::string time = versions[0]["time"];
    time[10] = ' ';
    time.pop_back();
    const std::string text = runTool({"history", file_}).out;
    EXPECT_EQ(text.substr(0, text.find('\n')), "1\t" + time + "\t23\t1\tveltool");
}

TEST_F(HistoryCommandTest, ShowsAVersion)
{
    set("2");
    set("3");
    EXPECT_EQ(runTool({"history", file_, "--show", "1"}).out, second);
    EXPECT_EQ(runTool({"history", file_, "--show", "2"}).out, first);
    const ToolRun none = runTool({"history", file_, "--show", "3"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "veltool: " + file_ + ": the history has no version 3; the oldest is 2\n");
    for (const char *number : {"0", "-1", "x", ""}) {
        EXPECT_EQ(runTool({"history", file_, std::string("--show=") + number}).status, 2) << number;
    }
    EXPECT_EQ(runTool({"history", file_, "--show=1", "--restore=1"}).status, 2);
    EXPECT_EQ(runTool({"history", file_, "--show=1", "--json"}).status, 2);
    EXPECT_EQ(runTool({"history", "-"}).status, 2);
}

TEST_F(HistoryCommandTest, ShowsDifferencesByPath)
{
    set("2");
    set("3");
    const ToolRun run = runTool({"history", file_, "--diff", "2"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "~ /A/x = 1 -> 3\n");
    EXPECT_EQ(json::parse(runTool({"history", "--json", file_, "--diff", "2"}).out),
              json::parse(R"([{"path":"/A/x","kind":"changed","old":"1","new":"3"}])"));
    folder_.write("a.vel", "A:\n  x = 1\nEND\n");
    EXPECT_EQ(runTool({"history", file_, "--diff", "2"}).status, 0);
}

TEST_F(HistoryCommandTest, RestoresAVersionAndKeepsTheOneThatItReplaces)
{
    set("2");
    const ToolRun run = runTool({"history", file_, "--restore", "1"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(folder_.read("a.vel"), first);
    EXPECT_EQ(folder_.read("a.vel.bak"), second);
    EXPECT_EQ(newest(), second);
    // A version with the same content is not kept.
    EXPECT_EQ(runTool({"history", file_, "--restore", "2"}).status, 0);
    EXPECT_EQ(list().size(), 2U);
    EXPECT_EQ(folder_.read("a.vel.bak"), second);
    EXPECT_EQ(runTool({"history", file_, "--restore", "3"}).status, 1);
}

TEST_F(HistoryCommandTest, RestoresADeletedFile)
{
    set("2");
    std::filesystem::remove(file_);
    EXPECT_EQ(list()[0]["changes"], nullptr);
    EXPECT_EQ(runTool({"history", file_, "--restore", "1"}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), first);
}

TEST_F(HistoryCommandTest, EveryCommandThatReplacesAFileKeepsIt)
{
    const std::string old = "LANGUAGE:\n  Version = 1.0\nEND\n";
    const std::string base = folder_.write("base.vel", second);
    const std::string theirs = folder_.write("theirs.vel", "A:\n  x = 2\n  y = 1\nEND\n");
    const std::vector<std::pair<Names, std::string>> commands = {
        {{"set", "--force", file_, "/A/x", "3"}, first},
        {{"add", "--force", file_, "/A/z", "3"}, first},
        {{"delete", "--force", file_, "/A/x"}, first},
        {{"format", "--in-place", file_}, first},
        {{"format", "--output", file_, file_}, first},
        {{"upgrade", file_}, old},
        {{"merge", base, file_, theirs, "--output", file_}, first},
    };
    for (const auto &[words, bytes] : commands) {
        for (const bool keeps : {false, true}) {
            std::filesystem::remove_all(folder_.path("state"));
            std::filesystem::remove(file_ + ".bak");
            folder_.write("a.vel", bytes);
            Names all = words;
            if (!keeps) {
                all.emplace_back("--no-backup");
            }
            EXPECT_EQ(runTool(all).status, 0) << words[0];
            EXPECT_NE(folder_.read("a.vel"), bytes) << words[0];
            EXPECT_EQ(folder_.has("a.vel.bak"), keeps && words[0] != "merge") << words[0];
            EXPECT_EQ(list().size(), keeps ? 1U : 0U) << words[0];
            EXPECT_EQ(newest(), keeps ? bytes : "") << words[0];
            EXPECT_EQ(folder_.has("state"), keeps) << words[0];
        }
    }
}

TEST_F(HistoryCommandTest, ARefusedOrEmptyEditKeepsNoVersion)
{
    EXPECT_EQ(runTool({"set", "--force", file_, "/A/x", "1"}).status, 0);
    EXPECT_EQ(runTool({"set", "--force", file_, "/A/y", "1"}).status, 1);
    EXPECT_EQ(runTool({"upgrade", "--dry-run", file_}).status, 0);
    EXPECT_FALSE(folder_.has("state"));
}

TEST_F(HistoryCommandTest, FormatDoesNotNameAMissingBackup)
{
    const ToolRun run = runTool({"format", "--in-place", "--no-backup", file_});
    EXPECT_EQ(run.err, "veltool: " + file_ + ": 1 comment is not in the formatted text\n");
}

TEST_F(HistoryCommandTest, AnUnusableStateFolderDoesNotStopASave)
{
    folder_.write("state", "not a folder");
    const ToolRun run = runTool({"set", "--force", file_, "/A/x", "2"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "veltool: " + file_ + ": the history does not have the previous version: " +
                           folder_.path("state") + "/veleditor/history: Not a directory\n");
    EXPECT_EQ(folder_.read("a.vel"), second);
    EXPECT_EQ(folder_.read("a.vel.bak"), first);
}

TEST_F(HistoryCommandTest, ReportsDamageAndListsTheRest)
{
    set("2");
    set("3");
    const ToolRun index = runShell("echo x >> $XDG_STATE_HOME/veleditor/history/a.vel-*/index");
    ASSERT_EQ(index.status, 0) << index.err;
    const ToolRun run = runTool({"history", file_});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("/index: is damaged; "), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 2);
    const ToolRun shown = runTool({"history", file_, "--show", "2"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.out, first);
    ASSERT_EQ(runShell("printf x | dd of=$(echo $XDG_STATE_HOME/veleditor/history/*/1.gz) bs=1 "
                       "seek=25 conv=notrunc")
                  .status,
              0);
    const ToolRun damaged = runTool({"history", file_, "--restore", "2"});
    EXPECT_EQ(damaged.out, "");
    EXPECT_NE(damaged.status, 0);
    EXPECT_EQ(folder_.read("a.vel"), "A:\n  x = 3   # one\nEND\n");
}

} // namespace
} // namespace veltool::test
