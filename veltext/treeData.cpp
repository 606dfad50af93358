// Copies a tree into a list of paths and values, and edits a text to match such a list.
#include "veltext/treeData.h"

#include "velapilt/src/velapilt.h"
#include "veltext/textEdit.h"
#include "veltext/treeWalk.h"

#include <algorithm>

namespace veltext {

namespace {

bool isBelow(const std::string &path, const std::string &object)
{
    return !object.empty() && path.size() > object.size() && path.starts_with(object) &&
           path[object.size()] == '/';
}

bool isSameKind(const TreeData::Item &a, const TreeData::Item &b)
{
    return a.value.has_value() == b.value.has_value();
}

void removeWhatIsGone(const TreeData &before, const TreeData &after, TextEdit *edit)
{
    std::string removed; // removes everything below it too
    for (const TreeData::Item &item : before.items()) {
        if (isBelow(item.path, removed)) {
            continue;
        }
        const TreeData::Item *now = after.find(item.path);
        if (now != nullptr && isSameKind(*now, item)) {
            continue;
        }
        edit->remove(item.path);
        removed = item.path;
    }
}

std::string movedComment(const std::string &path, const TreeData &before, const Moves &moves,
                         const TextEdit &edit)
{
    const auto move = moves.find(path);
    if (move == moves.end() || before.find(move->second) == nullptr) {
        return {};
    }
    return edit.commentOf(move->second);
}

} // namespace

TreeData::TreeData(velHandle *handle)
{
    TreeWalk walk(handle, velFindNode(handle, "/"), "/");
    for (walk.step(); walk.node() != nullptr; walk.step()) {
        const velNodeInfo &info = walk.info();
        std::optional<std::string> value;
        if (info.kind == velParam) {
            value = info.value != nullptr ? info.value : "";
        }
        add({walk.path(), std::move(value)});
    }
}

void TreeData::add(Item item)
{
    places_.emplace(item.path, items_.size());
    items_.push_back(std::move(item));
}

const TreeData::Item *TreeData::find(const std::string &path) const
{
    const auto found = places_.find(path);
    return found == places_.end() ? nullptr : &items_[found->second];
}

bool haveSameData(const TreeData &a, const TreeData &b)
{
    return a.items().size() == b.items().size() &&
           std::all_of(a.items().begin(), a.items().end(), [&](const TreeData::Item &item) {
               const TreeData::Item *other = b.find(item.path);
               return other != nullptr && other->value == item.value;
           });
}

void editTowards(const TreeData &before, const TreeData &after, const Moves &moves, TextEdit *edit)
{
    removeWhatIsGone(before, after, edit);
    for (const TreeData::Item &item : after.items()) {
        const TreeData::Item *was = before.find(item.path);
        const bool isKept = (was != nullptr) && isSameKind(*was, item);
        if (!isKept && item.value) {
            edit->addParameter(item.path, *item.value,
                               movedComment(item.path, before, moves, *edit));
        } else if (!isKept) {
            edit->addObject(item.path);
        } else if (was->value != item.value) {
            edit->setValue(item.path, *item.value);
        }
    }
}

} // namespace veltext
