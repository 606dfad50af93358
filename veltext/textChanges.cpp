// Compares the tree of a text with another one.
#include "veltext/textChanges.h"

#include "velapilt/src/velapilt.h"
#include "veltext/error.h"
#include "veltext/treeDiff.h"

#include <algorithm>
#include <utility>

namespace veltext {

namespace {

constexpr std::int32_t mostLevels = 10'000;

std::optional<std::string> owned(const char *value)
{
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

/// Whether the database has the node only because of its rules.
bool isOfLibrary(velHandle *data, const Difference &found)
{
    return found.kind == DifferenceKind::Added && isLibrary(data, found.path.c_str()) == 1;
}

} // namespace

std::vector<Change> changesTo(velHandle *data, const CommandText &before)
{
    velHandle *const text = before.tree();
    std::vector<Change> changes;
    compareTrees(text, velFindNode(text, "/"), data, velFindNode(data, "/"), "/",
                 [&](const Difference &found) {
                     if (!isOfLibrary(data, found)) {
                         changes.push_back({found.kind, found.path, owned(found.oldValue),
                                            owned(found.newValue)});
                     }
                 });
    return changes;
}

void requireComparable(const CommandText &text, const std::string &name)
{
    if (velDeepestBlock(text.tree()) > mostLevels) {
        throw Error(name + ": nests deeper than 10,000 levels, too deep to compare");
    }
}

const std::string &SiblingOrder::before(const std::string &path)
{
    const std::size_t end = path.rfind('/');
    std::string object = path.substr(0, std::max<std::size_t>(end, 1));
    if (object != object_) {
        object_ = std::move(object);
        readChildren();
    }
    return before_[path.substr(end + 1)];
}

void SiblingOrder::readChildren()
{
    before_.clear();
    std::string former;
    const velNode *parent = velFindNode(text_.tree(), object_.c_str());
    const velNode *child = parent != nullptr ? velFirstChild(parent) : nullptr;
    for (; child != nullptr; child = velNextSibling(child)) {
        std::string component = velComponentOf(velDescribe(text_.tree(), child));
        before_.emplace(component, std::exchange(former, component));
    }
}

} // namespace veltext
