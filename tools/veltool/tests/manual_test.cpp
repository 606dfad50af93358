// Runs the samples of docs/veltool.md and README.md.
#include "tools/veltool/support/command.h"
#include "tools/veltool/tests/documentSamples.h"
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace veltool::test {
namespace {

std::string textOf(const std::string &document)
{
    std::ifstream in(std::string(std::getenv("VEL_SOURCE_DIR")) + '/' + document);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(Manual, ListsEveryCommand)
{
    const std::string text = textOf("docs/veltool.md");
    for (const Command *command : allCommands()) {
        const std::string name = command->name;
        const bool isInTable = text.find("\n| `" + name + ' ') != std::string::npos ||
                               text.find("\n| `" + name + '`') != std::string::npos;
        EXPECT_TRUE(isInTable || name == "git-diff") << name; // only git calls it
    }
}

TEST(Manual, NamesEveryCommandOfDs)
{
    const std::string words = runTool({"ds", "--help"}).out;
    const std::size_t start = words.find("ds [OPTIONS] ") + 13;
    const std::string table = textOf("docs/veltool.md");
    std::istringstream names(words.substr(start, words.find(' ', start) - start));
    std::string row = "| `ds ";
    for (std::string name; std::getline(names, name, '|');) {
        row += (row.ends_with(' ') ? "" : "\\|") + name;
        EXPECT_EQ(runTool({"ds", name, "--help"}).status, 0) << name;
    }
    EXPECT_NE(table.find(row + " ...`"), std::string::npos) << row;
}

TEST(Manual, ItsSamplesAreTrue)
{
    // With the rules that ship with veltool, as for a user without other
    // settings.
    EXPECT_GT(replaySamples("docs/veltool.md", "unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS; "
                                               "veltool() { \"$VELTOOL\" \"$@\"; }"),
              6);
}

TEST(Readme, ItsSamplesAreTrue)
{
    // With copies of the examples, because some commands change them.
    EXPECT_GT(replaySamples("README.md", "unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS; "
                                         "[ -d examples ] || cp -r \"$VEL_SOURCE_DIR/examples\" .; "
                                         "veltool() { \"$VELTOOL\" \"$@\"; }"),
              4);
}

} // namespace
} // namespace veltool::test
