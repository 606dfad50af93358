// veltool git-diff: what git calls to show how a command file has changed.
#include "tools/veltool/git/gitProgram.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/loadFiles.h"
#include "tools/veltool/support/output.h"
#include "veltext/treeDiff.h"

#include <optional>

namespace veltool {

namespace {

// PATH OLD-FILE OLD-HEX OLD-MODE NEW-FILE NEW-HEX NEW-MODE, and of a renamed
// file its new path and what git found; of an unmerged one PATH alone.
constexpr std::size_t oldFile = 1;
constexpr std::size_t newFile = 4;
constexpr std::size_t newPath = 7;
constexpr std::size_t mostWords = 9;

/// The differences by path, a line each; nothing when one of the files is no
/// command data.
std::optional<std::string> differences(const std::string &before, const std::string &after)
{
    try {
        const std::vector<velHandlePtr> trees = loadFilesToCompare({before, after});
        velHandle *const a = trees[0].get();
        velHandle *const b = trees[1].get();
        std::string lines;
        veltext::compareTrees(
            a, velFindNode(a, "/"), b, velFindNode(b, "/"), "/",
            [&](const veltext::Difference &found) { lines += lineOf(found) + '\n'; });
        return lines;
    } catch (const veltext::Error &failure) {
        report(failure.message());
        return std::nullopt;
    }
}

/// As git shows texts.
std::string textDifferences(const std::string &before, const std::string &after)
{
    for (const std::string &file : {before, after})
        (void)readInput(file); // git would take what cannot be read for a difference
    const GitResult shown = runGit({"diff", "--no-ext-diff", "--no-index", "--", before, after});
    if (shown.status > 1)
        throw Failure("git diff failed with status " + std::to_string(shown.status));
    return shown.out;
}

class GitDiffTask : public Task
{
public:
    int run(const Words &words) override
    {
        if (words.size() == 1) {
            out() << "* Unmerged path " << words[0] << '\n';
            return statusGood;
        }
        if (words.size() < newPath)
            throw Failure("too few words; git knows what to give: see veltool git-setup");
        const std::string &path = words.size() > newPath ? words[newPath] : words[0];
        out() << "diff --veltool a/" << words[0] << " b/" << path << '\n';
        const std::optional<std::string> lines = differences(words[oldFile], words[newFile]);
        // Remarks, order and wrapping are shown where nothing else has changed.
        if (lines && !lines->empty())
            out() << *lines;
        else
            out() << textDifferences(words[oldFile], words[newFile]);
        return statusGood;
    }
};

} // namespace

const Command gitDiffCommand = {
    .name = "git-diff",
    .words = "PATH [OLD-FILE HEX MODE NEW-FILE HEX MODE ...]",
    .fewest = 1,
    .most = mostWords,
    .passesOn = false,
    .purpose = "Show git how a file has changed",
    .details = "What git diff calls where git-setup has been run. Shows the differences by path "
               "as diff does, or those of the text where the data is the same or cannot be read. "
               "The status is 0, whether anything differs or not.",
    .make = makeTask<GitDiffTask>,
};

} // namespace veltool
