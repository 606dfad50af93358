// Runs the samples of docs/veltool.md: a block "```vel NAME" or "```perl NAME"
// is a file, in a block "```console" each "$ " line is run by the shell and the
// lines behind it are what it prints.
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace veltool::test {
namespace {

struct Block
{
    std::string kind; ///< the word behind the fence
    std::string name; ///< the word behind that
    std::string text;
};

std::vector<Block> blocksOf(const std::string &file)
{
    std::ifstream in(file);
    std::vector<Block> blocks;
    bool isOpen = false;
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("```", 0) == 0) {
            isOpen = !isOpen;
            if (!isOpen)
                continue;
            std::istringstream words(line.substr(3));
            blocks.emplace_back();
            words >> blocks.back().kind >> blocks.back().name;
        } else if (isOpen) {
            blocks.back().text += line + '\n';
        }
    }
    return blocks;
}

/// Runs every command of a console block and writes down what a user sees.
std::string replay(const std::string &console, const std::string &folder)
{
    std::string seen;
    std::istringstream lines(console);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("$ ", 0) != 0)
            continue;
        // As for a user who has set nothing: with the rules that ship.
        const ToolRun run = runShell("cd " + folder +
                                     "; unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS; veltool() { "
                                     "\"$VELTOOL\" \"$@\"; }; exec 2>&1; " +
                                     line.substr(2));
        seen += line + '\n' + run.out + run.err;
    }
    return seen;
}

TEST(Manual, ItsSamplesAreTrue)
{
    const TemporaryFolder folder;
    const std::string manual = std::string(std::getenv("VEL_SOURCE_DIR")) + "/docs/veltool.md";
    int replayed = 0;
    for (const Block &block : blocksOf(manual)) {
        if (!block.name.empty())
            folder.write(block.name, block.text);
        if (block.kind != "console")
            continue;
        EXPECT_EQ(replay(block.text, folder.path()), block.text);
        ++replayed;
    }
    EXPECT_GT(replayed, 6);
}

} // namespace
} // namespace veltool::test
