// The command line: which words are options, what the help says, what is refused.
#include "tools/veltool/support/commandLine.h"

#include "tools/veltool/tests/toolRun.h"

#include <CLI/App.hpp>

#include <gtest/gtest.h>

#include <sstream>

namespace veltool {
namespace {

using test::runShell;
using test::runTool;
using test::ToolRun;

/// "options | plain words" of a command with a flag and an option with a value.
std::string split(const Words &words, bool passesOn = false)
{
    CLI::App app;
    bool flag = false;
    std::string output;
    app.add_flag("--in-place,-i", flag);
    app.add_option("--output,-o", output);
    std::string text;
    try {
        const SplitWords parts = splitWords(app, words, passesOn);
        for (const std::string &word : parts.options)
            text += word + ' ';
        text += '|';
        for (const std::string &word : parts.plain)
            text += ' ' + word;
    } catch (const Failure &failure) {
        text = failure.message();
    }
    return text;
}

TEST(SplitWords, TakesOptionsAnywhere)
{
    EXPECT_EQ(split({"a", "-i", "b", "--output", "c"}), "--in-place --output=c | a b");
    EXPECT_EQ(split({"--output=c d", "a"}), "--output=c d | a");
    EXPECT_EQ(split({"-oc", "a"}), "--output=c | a");
    EXPECT_EQ(split({"-io", "c", "a"}), "--in-place --output=c | a");
}

TEST(SplitWords, TakesWhatBeginsWithAMinusForAValueUnlessALetterFollows)
{
    EXPECT_EQ(split({"f", "/A", "-5"}), "| f /A -5");
    EXPECT_EQ(split({"f", "/A", "-.5e3 [Pa]"}), "| f /A -.5e3 [Pa]");
    EXPECT_EQ(split({"f", "-(a + b)", "-"}), "| f -(a + b) -");
    EXPECT_EQ(split({"f", "-x"}), "unknown option -x");
    EXPECT_EQ(split({"f", "--no-such"}), "unknown option --no-such");
}

TEST(SplitWords, EndsOptionsAtTwoMinuses)
{
    EXPECT_EQ(split({"-i", "--", "-i", "--output", "--"}), "--in-place | -i --output --");
}

TEST(SplitWords, LeavesWordsBehindTheFirstToWhoTakesThem)
{
    EXPECT_EQ(split({"-i", "script", "-i", "--help", "--"}, true),
              "--in-place | script -i --help --");
    EXPECT_EQ(split({"--", "script", "-i"}, true), "| script -i");
}

TEST(SplitWords, WantsAValueExactlyWhereOneIsTaken)
{
    EXPECT_EQ(split({"-o"}), "option -o needs a value");
    EXPECT_EQ(split({"--output="}), "option --output needs a value");
    EXPECT_EQ(split({"--in-place=yes"}), "option --in-place takes no value");
    EXPECT_EQ(split({"-o", "--", "a"}), "--output=-- | a") << "the next word, whatever it is";
}

TEST(CommandLine, HelpsEverywhere)
{
    const ToolRun general = runTool({"--help"});
    EXPECT_EQ(general.status, 0);
    EXPECT_EQ(general.err, "");
    for (const Command *command : allCommands()) {
        EXPECT_NE(general.out.find(std::string("  ") + command->name + ' '), std::string::npos)
            << command->name;
        for (const char *option : {"--help", "-h"}) {
            const ToolRun help = runTool({command->name, option});
            EXPECT_EQ(help.status, 0) << command->name;
            EXPECT_EQ(help.err, "");
            std::string usage = std::string("Usage: veltool ") + command->name + " [OPTIONS]";
            if (*command->words)
                usage.append(1, ' ').append(command->words);
            EXPECT_NE(help.out.find(usage + '\n'), std::string::npos) << help.out;
            std::istringstream lines(help.out);
            for (std::string line; std::getline(lines, line);)
                EXPECT_LE(line.size(), 95U) << line;
        }
    }
}

TEST(CommandLine, TellsItsVersionEverywhere)
{
    const ToolRun general = runTool({"--version"});
    EXPECT_EQ(general.status, 0);
    EXPECT_EQ(general.out.rfind("veltool ", 0), 0U);
    EXPECT_EQ(runTool({"set", "--version"}).out, general.out);
}

TEST(CommandLine, RefusesWhatItDoesNotKnow)
{
    const std::vector<Words> misuses = {
        {},
        {"no-such-command"},
        {"--no-such-option"},
        {"get"},
        {"get", "one"},
        {"tree", "one", "two", "three"},
        {"get", "--no-such-option", "one", "two"},
        {"format", "--width"},
        {""},
    };
    for (const Words &words : misuses) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.status, 2) << ::testing::PrintToString(words);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U) << run.err;
    }
}

TEST(CommandLine, ReportsAShortWriteOfAnyText)
{
    for (const char *words : {"--help", "--version", "get --help", "format f.vel", "tree f.vel",
                              "tree --json f.vel", "get f.vel /A/x", "find f.vel x"}) {
        const ToolRun run =
            runShell("cd \"$(mktemp -d)\" && printf 'A:\\nx = 1\\nEND\\n' > f.vel && "
                     "\"$VELTOOL\" " +
                     std::string(words) + " > /dev/full");
        EXPECT_EQ(run.status, 2) << words;
        EXPECT_EQ(run.err, "veltool: standard output: No space left on device\n") << words;
    }
    EXPECT_EQ(runShell("\"$VELTOOL\" --help >&-").status, 2) << "closed";
    EXPECT_EQ(runShell("set -o pipefail; \"$VELTOOL\" --help | true; sleep 0.1").status / 128, 0);
}

} // namespace
} // namespace veltool
