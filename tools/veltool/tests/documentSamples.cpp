// Reads the code blocks of a document, and runs its commands in the shell.
#include "tools/veltool/tests/documentSamples.h"

#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace veltool::test {

namespace {

struct Block
{
    std::string kind; ///< the first word after the fence
    std::string name; ///< the second word
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
            if (!isOpen) {
                continue;
            }
            std::istringstream words(line.substr(3));
            blocks.emplace_back();
            words >> blocks.back().kind >> blocks.back().name;
        } else if (isOpen) {
            blocks.back().text += line + '\n';
        }
    }
    return blocks;
}

/// Runs every command of a console block and returns what a user would see.
std::string replay(const std::string &console, const std::string &folder, const std::string &setup)
{
    std::string seen;
    std::istringstream lines(console);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("$ ", 0) != 0) {
            continue;
        }
        const ToolRun run =
            runShell("cd " + folder + "; " + setup + "; exec 2>&1; " + line.substr(2));
        seen += line + '\n' + run.out + run.err;
    }
    return seen;
}

} // namespace

int replaySamples(const std::string &document, const std::string &setup)
{
    const TemporaryFolder folder;
    int replayed = 0;
    for (const Block &block :
         blocksOf(std::string(std::getenv("VEL_SOURCE_DIR")) + '/' + document)) {
        if (!block.name.empty()) {
            folder.write(block.name, block.text);
        }
        if (block.kind != "console") {
            continue;
        }
        EXPECT_EQ(replay(block.text, folder.path(), setup), block.text);
        ++replayed;
    }
    return replayed;
}

} // namespace veltool::test
