// Reads the versions from the newest to the oldest, and compares each with the
// next.
#include "veltext/historyChanges.h"

#include "veltext/veltext.h"

namespace veltext {

namespace {

/// A limit, because the size of the compared text grows with the square of the
/// levels.
constexpr std::int32_t mostLevels = 10'000;

using Text = std::optional<CommandText>;

Text parsed(const std::string &bytes)
{
    try {
        Text text(bytes);
        if (velDeepestBlock(text->tree()) <= mostLevels) {
            return text;
        }
    } catch (const Error &) {
        // It is not VEL.
    }
    return {};
}

Text parsed(const History &history, const Version &version)
{
    try {
        return parsed(history.read(version));
    } catch (const Error &) {
        return {}; // it is damaged
    }
}

std::optional<std::size_t> changesBetween(const Text &before, const Text &after)
{
    if (!before || !after) {
        return {};
    }
    std::size_t count = 0;
    velHandle *const a = before->tree();
    velHandle *const b = after->tree();
    compareTrees(a, velFindNode(a, "/"), b, velFindNode(b, "/"), "/",
                 [&count](const Difference &) { ++count; });
    return count;
}

} // namespace

std::vector<std::optional<std::size_t>> countChanges(const History &history,
                                                     const std::vector<Version> &versions,
                                                     const std::string *current)
{
    std::vector<std::optional<std::size_t>> counts;
    Text after = current != nullptr ? parsed(*current) : Text();
    for (const Version &version : versions) {
        Text before = parsed(history, version);
        counts.push_back(changesBetween(before, after));
        after = std::move(before);
    }
    return counts;
}

} // namespace veltext
