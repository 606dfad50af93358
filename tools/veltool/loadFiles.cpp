#include "tools/veltool/loadFiles.h"

#include "tools/veltool/commandData.h"
#include "tools/veltool/treeDiff.h"

#include <algorithm>
#include <filesystem>
#include <future>
#include <optional>

namespace veltool {

namespace {

/// Whether it can be loaded while others are: the container library has one set
/// of open files for the process, and a pipe tells only when read what it holds.
bool isPlainText(const std::string &file)
{
    std::error_code error;
    return file != standardInput && std::filesystem::is_regular_file(file, error) &&
           kindOfFile(file) == FileKind::Text;
}

bool isTooDeep(const velHandlePtr &tree)
{
    return velDeepestBlock(tree.get()) > mostLevels;
}

/// Objects have no value on either side.
bool isTooDeep(const Difference &difference)
{
    return !difference.oldValue && !difference.newValue &&
           std::count(difference.path.begin(), difference.path.end(), '/') > mostLevels;
}

} // namespace

void requireOneStandardInput(std::span<const std::string> files)
{
    if (std::count(files.begin(), files.end(), standardInput) > 1)
        throw Failure("only one of the files can be standard input");
}

std::vector<velHandlePtr> loadFiles(const Words &files)
{
    requireOneStandardInput(files);
    const bool together = std::all_of(files.begin(), files.end(), isPlainText);
    // Where there are no more threads to be had, async falls back on deferred.
    const std::launch how =
        together ? std::launch::async | std::launch::deferred : std::launch::deferred;
    std::vector<std::future<velHandlePtr>> loads;
    for (const std::string &file : files)
        loads.push_back(std::async(how, [&file] { return loadFile(file); }));

    std::vector<velHandlePtr> handles;
    std::optional<Failure> failed;
    for (std::future<velHandlePtr> &load : loads) {
        try {
            handles.push_back(load.get());
        } catch (const Failure &failure) {
            if (failed)
                report(failed->message());
            failed = failure;
        }
    }
    if (failed)
        throw Failure(*failed);
    return handles;
}

std::vector<velHandlePtr> loadFilesToCompare(const Words &files)
{
    std::vector<velHandlePtr> trees = loadFiles(files);
    if (std::none_of(trees.begin(), trees.end(),
                     [](const velHandlePtr &tree) { return isTooDeep(tree); }))
        return trees;
    velHandle *const a = trees[0].get();
    velHandle *const b = trees[1].get();
    compareTrees(a, velFindNode(a, "/"), b, velFindNode(b, "/"), "/",
                 [&](const Difference &difference) {
                     if (isTooDeep(difference))
                         throwTooDeep(files[difference.kind == DifferenceKind::Added ? 1 : 0]);
                 });
    return trees;
}

} // namespace veltool
