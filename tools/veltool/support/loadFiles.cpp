// Loads files in parallel where that is safe, otherwise one after the other.
#include "tools/veltool/support/loadFiles.h"

#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/input.h"
#include "veltext/treeDiff.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <future>

namespace veltool {

namespace {

/// Whether the file can be loaded in parallel with others. Containers cannot: their
/// library has one set of open files for the process. A pipe may be a container.
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

/// Whether the difference is an object at a path that is too deep. An object has no
/// value on either side.
bool isTooDeep(const veltext::Difference &difference)
{
    return difference.oldValue == nullptr && difference.newValue == nullptr &&
           std::count(difference.path.begin(), difference.path.end(), '/') > mostLevels;
}

} // namespace

void requireOneStandardInput(std::span<const std::string> files)
{
    if (std::count(files.begin(), files.end(), standardInput) > 1) {
        throw Failure("only one file can be standard input (-); name the others");
    }
}

std::vector<velHandlePtr> loadFiles(const Words &files)
{
    requireOneStandardInput(files);
    const bool together = std::all_of(files.begin(), files.end(), isPlainText);
    // If no more threads can be created, async uses deferred instead.
    const std::launch how =
        together ? std::launch::async | std::launch::deferred : std::launch::deferred;
    std::vector<std::future<velHandlePtr>> loads;
    for (const std::string &file : files) {
        loads.push_back(std::async(how, [&file] { return loadFile(file); }));
    }

    std::vector<velHandlePtr> handles;
    std::exception_ptr last;
    std::string lastMessage;
    for (std::future<velHandlePtr> &load : loads) {
        try {
            handles.push_back(load.get());
        } catch (const veltext::Error &failure) {
            if (last) {
                report(lastMessage);
            }
            last = std::current_exception();
            lastMessage = failure.message();
        }
    }
    if (last) {
        std::rethrow_exception(last);
    }
    return handles;
}

std::vector<velHandlePtr> loadFilesToCompare(const Words &files)
{
    std::vector<velHandlePtr> trees = loadFiles(files);
    if (std::none_of(trees.begin(), trees.end(),
                     [](const velHandlePtr &tree) { return isTooDeep(tree); })) {
        return trees;
    }
    velHandle *const a = trees[0].get();
    velHandle *const b = trees[1].get();
    veltext::compareTrees(
        a, velFindNode(a, "/"), b, velFindNode(b, "/"), "/",
        [&](const veltext::Difference &difference) {
            if (isTooDeep(difference)) {
                throwTooDeep(files[difference.kind == veltext::DifferenceKind::Added ? 1 : 0]);
            }
        });
    return trees;
}

} // namespace veltool
