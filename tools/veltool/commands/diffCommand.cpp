// veltool diff: lists the differences between two files by path.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/differences.h"
#include "tools/veltool/support/loadFiles.h"

namespace veltool {

namespace {

class DiffTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print a JSON array");
    }

    int run(const Words &words) override
    {
        const std::vector<velHandlePtr> trees = loadFilesToCompare(words);
        return printDifferences(trees[0].get(), trees[1].get(), json_);
    }

private:
    bool json_ = false;
};

} // namespace

const Command diffCommand = {
    .name = "diff",
    .words = "A B",
    .fewest = 2,
    .most = 2,
    .passesOn = false,
    .purpose = "Show what differs between two files",
    .details = "Compares by path; order, wrapping and comments do not matter. Prints a line for "
               "each object or parameter: + only in B, - only in A, ~ with another value. Status 1 "
               "if there is a difference.",
    .make = makeTask<DiffTask>,
};

} // namespace veltool
