// The command line: which words are options, the help texts, and usage errors.
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

/// "options | arguments" of a command with a flag and an option with a value, or the
/// message of a usage error.
std::string split(const Words &words, bool passesOn = false)
{
    CLI::App app("", "veltool x");
    bool flag = false;
    std::string output;
    app.add_flag("--in-place,-i", flag);
    app.add_option("--output,-o", output);
    std::string text;
    try {
        const SplitWords parts = splitWords(app, words, passesOn);
        for (const std::string &word : parts.options) {
            text += word + ' ';
        }
        text += '|';
        for (const std::string &word : parts.plain) {
            text += ' ' + word;
        }
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

TEST(SplitWords, TakesAWordWithAMinusSignAsAnArgumentUnlessALetterFollows)
{
    EXPECT_EQ(split({"f", "/A", "-5"}), "| f /A -5");
    EXPECT_EQ(split({"f", "/A", "-.5e3 [Pa]"}), "| f /A -.5e3 [Pa]");
    EXPECT_EQ(split({"f", "-(a + b)", "-"}), "| f -(a + b) -");
    EXPECT_EQ(split({"f", "-x"}), "unknown option \"-x\"; see veltool x --help");
    EXPECT_EQ(split({"f", "--no-such"}), "unknown option \"--no-such\"; see veltool x --help");
}

TEST(SplitWords, SuggestsTheClosestOption)
{
    EXPECT_EQ(split({"--in-plce"}), "unknown option \"--in-plce\"; did you mean \"--in-place\"?");
    EXPECT_EQ(split({"--inplace"}), "unknown option \"--inplace\"; did you mean \"--in-place\"?");
    EXPECT_EQ(split({"--Output=a"}), "unknown option \"--Output\"; did you mean \"--output\"?");
}

TEST(SplitWords, EndsOptionsAtTwoMinusSigns)
{
    EXPECT_EQ(split({"-i", "--", "-i", "--output", "--"}), "--in-place | -i --output --");
}

TEST(SplitWords, PassesOnTheWordsAfterTheFirst)
{
    EXPECT_EQ(split({"-i", "script", "-i", "--help", "--"}, true),
              "--in-place | script -i --help --");
    EXPECT_EQ(split({"--", "script", "-i"}, true), "| script -i");
}

TEST(SplitWords, ExpectsAValueOnlyForOptionsThatTakeOne)
{
    EXPECT_EQ(split({"-o"}), "option -o needs a value");
    EXPECT_EQ(split({"--output="}), "option --output needs a value");
    EXPECT_EQ(split({"--in-place=yes"}), "option --in-place takes no value");
    EXPECT_EQ(split({"-o", "--", "a"}), "--output=-- | a") << "any next word";
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
            if (*command->words) {
                usage.append(1, ' ').append(command->words);
            }
            EXPECT_NE(help.out.find(usage + '\n'), std::string::npos) << help.out;
            std::istringstream lines(help.out);
            for (std::string line; std::getline(lines, line);) {
                EXPECT_LE(line.size(), 95U) << line;
            }
        }
    }
}

TEST(CommandLine, ShowsItsVersionEverywhere)
{
    const ToolRun general = runTool({"--version"});
    EXPECT_EQ(general.status, 0);
    EXPECT_EQ(general.out.rfind("veltool ", 0), 0U);
    EXPECT_EQ(runTool({"set", "--version"}).out, general.out);
}

TEST(CommandLine, ReportsUsageErrors)
{
    const std::vector<Words> errors = {
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
    for (const Words &words : errors) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.status, 2) << ::testing::PrintToString(words);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U) << run.err;
    }
}

TEST(CommandLine, SaysWhatIsWrongAndWhatToDo)
{
    const struct
    {
        Words words;
        std::string message;
    } cases[] = {
        {{}, "missing command; see veltool --help"},
        {{"chek", "a.vel"}, "unknown command \"chek\"; did you mean \"check\"?"},
        {{"upgarde"}, "unknown command \"upgarde\"; did you mean \"upgrade\"?"},
        {{"validate"}, "unknown command \"validate\"; see veltool --help"},
        {{"ds", "lst"}, "unknown command \"ds lst\"; did you mean \"ds list\"?"},
        {{"ds", "x"}, "unknown command \"ds x\"; see veltool ds --help"},
        {{"rules", "chek"}, "unknown command \"rules chek\"; did you mean \"rules check\"?"},
        {{"rules", "x"}, "unknown command \"rules x\"; see veltool rules --help"},
        {{"--bad"}, "unknown option \"--bad\"; see veltool --help"},
        {{"check", "--jsn"}, "unknown option \"--jsn\"; did you mean \"--json\"?"},
        {{"ds", "list", "--jsno"}, "unknown option \"--jsno\"; did you mean \"--json\"?"},
        {{"get", "a.vel"}, "missing argument; usage: veltool get [OPTIONS] FILE... PATH"},
        {{"set", "a", "b", "c", "d"},
         "too many arguments; usage: veltool set [OPTIONS] FILE PATH VALUE"},
        {{"ds", "copy", "a", "b", "c"},
         "wrong number of arguments; usage: veltool ds copy FROM TO [WHAT WHERE WHEN]"},
        {{"ds", "locate", "a", "b", "c", "d"}, "WHEN must be a whole number of 32 bits, not \"d\""},
        {{"check", "--jobs", "0", "a"}, "--jobs must be a whole number of 1 or more, not \"0\""},
        {{"format", "--width", "2", "a"},
         "--width must be 0 (no wrapping) or 3 or more, not \"2\""},
        {{"git-diff", "a", "b"},
         "missing argument; git calls this command after veltool git-setup"},
    };
    for (const auto &[words, message] : cases) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.err, "veltool: " + message + '\n');
        EXPECT_EQ(run.status, 2) << message;
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
