// Runs every command on files that are missing, truncated, of the wrong type or
// unreadable, and expects a message that names the file, and the status.
#include "tools/veltool/support/command.h"
#include "tools/veltool/tests/toolRun.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace veltool::test {
namespace {

/// The words of a run; "FILE" is replaced by the bad file.
using Run = std::vector<std::string>;

/// The runs of each command that reads command data. A command that is not here
/// and not in `others` fails the test. So nobody forgets a new command.
const std::multimap<std::string, Run> &runs()
{
    static const std::multimap<std::string, Run> all = {
        {"check", {"check", "FILE"}},
        {"check", {"check", "--json", "--jobs", "2", "FILE", "FILE"}},
        {"format", {"format", "FILE"}},
        {"format", {"format", "--check", "FILE"}},
        {"format", {"format", "--in-place", "FILE"}},
        {"tree", {"tree", "FILE"}},
        {"tree", {"tree", "--json", "FILE", "/x"}},
        {"get", {"get", "FILE", "/x"}},
        {"get", {"get", "--json", "FILE", "/x"}},
        {"find", {"find", "FILE", "x"}},
        {"find", {"find", "--json", "FILE", "x"}},
        {"set", {"set", "FILE", "/x", "2"}},
        {"add", {"add", "FILE", "/y", "2"}},
        {"delete", {"delete", "FILE", "/x"}},
        {"upgrade", {"upgrade", "FILE"}},
        {"upgrade", {"upgrade", "--dry-run", "--json", "FILE"}},
        {"explain", {"explain", "FILE", "/x"}},
        {"rules", {"rules", "check", "FILE"}},
        {"embed", {"embed", "FILE", "no.def"}},
    };
    return all;
}

/// Commands that do not read one file of command data; each has its own tests for bad
/// files.
const std::vector<std::string> others = {"extract",   "perl",     "ds",      "diff",   "merge",
                                         "git-setup", "git-diff", "history", "recover"};

bool isEdit(const Run &run)
{
    const std::vector<std::string> edits = {"set", "add", "delete", "upgrade"};
    if (run[1] == "--dry-run") {
        return false;
    }
    return std::find(edits.begin(), edits.end(), run[0]) != edits.end() || run[1] == "--in-place";
}

ToolRun runOn(Run run, const std::string &file)
{
    std::replace(run.begin(), run.end(), std::string("FILE"), file);
    return runTool(run);
}

/// Expects no output or an empty list; of check, entries for the failed files.
void expectNoResult(const Run &words, const std::string &printed)
{
    if (words[0] != "check" || printed.empty()) {
        EXPECT_TRUE(printed.empty() || printed == "[]\n") << printed;
        return;
    }
    for (const nlohmann::json &entry : nlohmann::json::parse(printed)) {
        EXPECT_EQ(entry["id"], "error") << printed;
    }
}

/// Expects from every command only this message about the file, and status 2.
void expectFailure(const std::string &file, const std::string &message)
{
    for (const auto &[name, words] : runs()) {
        const ToolRun run = runOn(words, file);
        EXPECT_EQ(run.status, 2) << ::testing::PrintToString(words) << run.err;
        EXPECT_EQ(run.err.rfind("veltool: " + file, 0), 0U)
            << ::testing::PrintToString(words) << run.err;
        EXPECT_NE(run.err.find(message), std::string::npos)
            << ::testing::PrintToString(words) << run.err;
        const auto files = std::count(words.begin(), words.end(), "FILE");
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), files) << run.err;
        expectNoResult(words, run.out);
    }
}

TEST(BadInput, EveryCommandIsTried)
{
    for (const Command *command : allCommands()) {
        EXPECT_TRUE(runs().contains(command->name) ||
                    std::find(others.begin(), others.end(), command->name) != others.end())
            << command->name;
    }
}

TEST(BadInput, MissingFile)
{
    const TemporaryFolder folder;
    expectFailure(folder.path("missing"), "No such file or directory");
}

TEST(BadInput, TruncatedText)
{
    const TemporaryFolder folder;
    expectFailure(folder.write("short", "A:\nx = 1\n"), "1 missing END statement(s) in input");
    expectFailure(folder.write("long", "x = 1\nEND\n"), ":2: parseVELLineH: unmatched END");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"long", "short"}));
}

TEST(BadInput, WrongType)
{
    const TemporaryFolder folder;
    const std::string program = folder.write("binary", "\x7F"
                                                       "ELF\x02\x01\x01\x80\xFF\n\x01\n");
    expectFailure(program, ":1: ");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"binary"});
}

TEST(BadInput, DirectoryAndDevice)
{
    const TemporaryFolder folder;
    expectFailure(folder.path(), "");
    if (access("/proc/self/mem", R_OK) == 0) { // it can be opened, but not read from its start
        expectFailure("/proc/self/mem", "");
    }
}

TEST(BadInput, UnreadableFile)
{
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "x = 1\n");
    ASSERT_EQ(chmod(file.c_str(), 0), 0);
    expectFailure(file, "Permission denied");
}

TEST(BadInput, TruncatedContainer)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("case.res", "*INFO\n                   0\n*ENDINFO\n");
    for (const auto &[name, words] : runs()) {
        const ToolRun run = runOn(words, file);
        const bool refused = isEdit(words);
        EXPECT_EQ(run.status, refused ? 1 : 2) << ::testing::PrintToString(words) << run.err;
        EXPECT_EQ(run.err.rfind("veltool: " + file + ": ", 0), 0U) << run.err;
        EXPECT_NE(run.err.find(refused ? "veltool extract" : "cannot read its command data"),
                  std::string::npos)
            << ::testing::PrintToString(words) << run.err;
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"case.res"});
}

TEST(BadInput, EveryCommandChecksItsOptionsAndArguments)
{
    for (const Command *command : allCommands()) {
        const std::string name = command->name;
        // These commands pass their options on to another command.
        if (command->passesOn) {
            continue;
        }
        const ToolRun unknown = runTool({name, "--no-such-option"});
        EXPECT_EQ(unknown.status, 2) << name;
        EXPECT_EQ(unknown.err,
                  "veltool: unknown option \"--no-such-option\"; see veltool " + name + " --help\n")
            << name;
        EXPECT_EQ(runTool({name, "--version"}).status, 0) << name;
        if (command->fewest > 0) {
            const ToolRun missing = runTool({name});
            EXPECT_EQ(missing.status, 2) << name;
            EXPECT_EQ(missing.err, "veltool: missing argument; usage: veltool " + name +
                                       " [OPTIONS] " + command->words + '\n');
        }
    }
}

TEST(BadInput, DeepNestingGivesAMessage)
{
    const TemporaryFolder folder;
    std::string text;
    for (int i = 0; i < 3000; ++i) {
        text += "A: a\n";
    }
    text += "x = deep\n";
    for (int i = 0; i < 3000; ++i) {
        text += "END\n";
    }
    const std::string file = folder.write("deep.vel", text);
    EXPECT_EQ(runTool({"find", file, "deep"}).status, 0);
    EXPECT_EQ(runTool({"tree", file}).status, 0);
    EXPECT_EQ(runTool({"tree", "--json", file}).status, 0);
    EXPECT_EQ(runTool({"format", file}).status, 0);
    EXPECT_EQ(runTool({"check", file}).status, 1);
    EXPECT_EQ(runTool({"upgrade", "--dry-run", file}).status, 0);
}

// The second one would be read as an empty file, which is valid.
TEST(BadInput, OnlyOneFileMayBeStandardInput)
{
    const std::vector<Words> refused = {
        {"check", "-", "-"},         {"check", "--jobs", "2", "-", "-"},
        {"format", "-c", "-", "-"},  {"get", "--json", "-", "-", "/x"},
        {"find", "-", "-", "x"},     {"upgrade", "--dry-run", "-", "-"},
        {"rules", "check", "-", "-"}};
    for (const Words &run : refused) {
        const ToolRun result = runTool(run, "x = 1\n");
        EXPECT_EQ(result.status, 2) << run[0];
        EXPECT_EQ(result.out, "") << run[0];
        EXPECT_EQ(result.err, "veltool: only one file can be standard input (-); name the others\n")
            << run[0];
    }
}

} // namespace
} // namespace veltool::test
