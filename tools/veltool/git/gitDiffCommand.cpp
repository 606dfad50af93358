// veltool git-diff: git calls it to show how a command file has changed.
#include "tools/veltool/git/gitProgram.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/loadFiles.h"
#include "tools/veltool/support/output.h"
#include "veltext/treeDiff.h"

#include <optional>

namespace veltool {

namespace {

// git passes PATH OLD-FILE OLD-HEX OLD-MODE NEW-FILE NEW-HEX NEW-MODE. For a
// renamed file, it also passes the new path and a text about it; for an unmerged
// file, only PATH.
constexpr std::size_t oldFile = 1;
constexpr std::size_t newFile = 4;
constexpr std::size_t newPath = 7;
constexpr std::size_t mostWords = 9;

/// The differences by path, one on each line; nothing if one of the files does
/// not contain command data.
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

/// The differences by line, as git shows them.
std::string textDifferences(const std::string &before, const std::string &after)
{
    for (const std::string &file : {before, after}) {
        static_cast<void>(readInput(file)); // git would show an unreadable file as a difference
    }
    const GitResult shown = runGit({"diff", "--no-ext-diff", "--no-index", "--", before, after});
    if (shown.status > 1) {
        throw Failure("git diff failed with status " + std::to_string(shown.status));
    }
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
        if (words.size() < newPath) {
            throw Failure("missing argument; git calls this command after veltool git-setup");
        }
        const std::string &path = words.size() > newPath ? words[newPath] : words[0];
        out() << "diff --veltool a/" << words[0] << " b/" << path << '\n';
        const std::optional<std::string> lines = differences(words[oldFile], words[newFile]);
        // If the data is the same, show changes of comments, order and wrapping.
        if (lines && !lines->empty()) {
            out() << *lines;
        } else {
            out() << textDifferences(words[oldFile], words[newFile]);
        }
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
    .details =
        "git diff calls this command after veltool git-setup. Prints the differences by path "
        "as veltool diff does, or by line if the data is the same or cannot be read. The "
        "status is 0 with and without differences.",
    .make = makeTask<GitDiffTask>,
};

} // namespace veltool
