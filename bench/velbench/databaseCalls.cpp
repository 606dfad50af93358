// Measures the command database: parse, format and look up.
#include "bench/velbench/calls.h"

#include "velapilt/src/velapilt.h"

#include <cstring>

namespace velBench {

namespace {

constexpr std::size_t lookups = 1000000;

velHandlePtr newHandle()
{
    velHandlePtr handle(velCreateHandle());
    if (!handle) {
        throw Failure("memory error");
    }
    return handle;
}

void load(velHandle *handle, const std::string &file)
{
    require(loadVELFile(handle, file.c_str(), "vel"));
}

/// Walks without recursion, because the blocks of a file may nest too deep for
/// the stack.
std::uint64_t countParameters(velHandle *handle)
{
    std::uint64_t count = 0;
    std::vector<const velNode *> pending{velFirstChild(velFindNode(handle, "/"))};
    while (!pending.empty()) {
        const velNode *node = pending.back();
        pending.pop_back();
        for (; node != nullptr; node = velNextSibling(node)) {
            if (velDescribe(handle, node).kind == velParam) {
                ++count;
            } else if (const velNode *child = velFirstChild(node)) {
                pending.push_back(child);
            }
        }
    }
    return count;
}

} // namespace

std::uint64_t countParameters(const std::string &file)
{
    const velHandlePtr handle = newHandle();
    load(handle.get(), file);
    return countParameters(handle.get());
}

Result velParse(const Arguments &arguments)
{
    const std::string &file = arguments[0];
    Result result{.name = "vel.parse", .bytes = fileSize(file)};

    const std::int64_t before = residentBytes();
    velHandlePtr handle = newHandle();
    load(handle.get(), file);
    result.rss = residentBytes() - before;
    result.params = countParameters(handle.get());

    result.seconds = bestOf([&] { handle = newHandle(); }, [&] { load(handle.get(), file); });
    return result;
}

Result velFormat(const Arguments &arguments)
{
    Result result{.name = "vel.format"};
    const velHandlePtr handle = newHandle();
    load(handle.get(), arguments[0]);
    result.params = countParameters(handle.get());

    const std::int64_t before = residentBytes();
    velStringList lines;
    require(velWrapText(handle.get(), "/", velUsualWidth, &lines));
    result.rss = residentBytes() - before;
    for (const char *line : lines) {
        result.bytes += std::strlen(line) + 1;
    }

    result.seconds =
        bestOf([&] { lines = velStringList(); },
               [&] { require(velWrapText(handle.get(), "/", velUsualWidth, &lines)); });
    return result;
}

Result velLookup(const Arguments &arguments)
{
    Result result{.name = "vel.lookup", .params = lookups};
    const std::vector<std::string> paths = readLines(arguments[1]);
    const std::vector<std::uint32_t> order = fixedOrder(paths.size(), lookups);

    const std::int64_t before = residentBytes();
    const velHandlePtr handle = newHandle();
    load(handle.get(), arguments[0]);
    result.rss = residentBytes() - before;

    result.seconds =
        bestOf([&] { result.bytes = 0; },
               [&] {
                   for (const std::uint32_t i : order) {
                       const char *value = velFindValue(handle.get(), paths[i].c_str());
                       if (value == nullptr) {
                           throw Failure(paths[i] + ": the file has no such parameter");
                       }
                       result.bytes += std::strlen(value);
                   }
               });
    return result;
}

} // namespace velBench
