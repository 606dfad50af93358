// veltool diff: lists the differences between two files by path.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/loadFiles.h"
#include "tools/veltool/support/output.h"
#include "veltext/treeDiff.h"

namespace veltool {

namespace {

const char *wordOf(veltext::DifferenceKind kind)
{
    switch (kind) {
    case veltext::DifferenceKind::Added:
        return "added";
    case veltext::DifferenceKind::Removed:
        return "removed";
    default:
        return "changed";
    }
}

void printJson(const veltext::Difference &difference)
{
    out() << '{' << jsonMember("path", difference.path) << ','
          << jsonMember("kind", wordOf(difference.kind)) << ','
          << jsonMember("old", difference.oldValue) << ',' << jsonMember("new", difference.newValue)
          << '}';
}

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
        velHandle *const before = trees[0].get();
        velHandle *const after = trees[1].get();
        bool isSame = true;
        JsonArray array;
        veltext::compareTrees(before, velFindNode(before, "/"), after, velFindNode(after, "/"), "/",
                              [&](const veltext::Difference &difference) {
                                  isSame = false;
                                  if (!json_) {
                                      out() << lineOf(difference) << '\n';
                                      return;
                                  }
                                  out() << array.next();
                                  printJson(difference);
                              });
        if (json_)
            out() << array.end();
        return isSame ? statusGood : statusFindings;
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
