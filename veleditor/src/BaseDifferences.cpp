// Follows the edits of a document, item by item.
#include "veleditor/src/BaseDifferences.h"

#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/Document.h"
#include "velparser/api/velparser.h"
#include "veltext/error.h"
#include "veltext/textChanges.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velEditor {

namespace {

constexpr std::string_view blockEnd = "END";
constexpr std::string_view assignment = " = ";

/// The rank of a character of a path: the end of a component comes first.
int rank(char c)
{
    return c == '/' ? -1 : static_cast<unsigned char>(c);
}

bool isAssignment(std::string_view line)
{
    return line.find(assignment) != std::string_view::npos;
}

/// Calls `use` for each line of a text, without its end.
template <typename Use>
void forEachLine(std::string_view text, Use use)
{
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        use(text.substr(start, end - start));
        start = end + 1;
    }
}

veltext::Change changeOf(const std::string &path, bool isParameter,
                         const std::optional<std::string> &base,
                         const std::optional<std::string> &now)
{
    const veltext::DifferenceKind kind = !base  ? veltext::DifferenceKind::Added
                                         : !now ? veltext::DifferenceKind::Removed
                                                : veltext::DifferenceKind::Changed;
    return {kind, path, isParameter ? base : std::nullopt, isParameter ? now : std::nullopt};
}

bool isBelow(const std::string &path, const std::string &object)
{
    return path.size() > object.size() && path.starts_with(object) && path[object.size()] == '/';
}

} // namespace

bool BaseDifferences::InTreeOrder::operator()(const Key &a, const Key &b) const
{
    if (a.path != b.path) {
        return std::lexicographical_compare(
            a.path.begin(), a.path.end(), b.path.begin(), b.path.end(),
            [](char left, char right) { return rank(left) < rank(right); });
    }
    return a.isParameter && !b.isParameter;
}

BaseDifferences::BaseDifferences(const Document &document, QObject *parent)
    : QObject(parent), document_(document), revision_(document.revision())
{
    connect(&document, &Document::applied, this, &BaseDifferences::follow);
}

// --- The base -----------------------------------------------------------------------

void BaseDifferences::clear()
{
    items_.clear();
    losses_.clear();
    gone_.clear();
    revision_ = document_.revision();
}

void BaseDifferences::reset()
{
    clear();
    emit differ();
}

Message BaseDifferences::compareWith(const std::string &text, const std::string &name)
{
    try {
        const veltext::CommandText base(text, name);
        veltext::requireComparable(base, name);
        const std::vector<veltext::Change> changes =
            veltext::changesTo(velparser::findLiteHandle(), base);
        veltext::SiblingOrder order(base);
        clear();
        for (const veltext::Change &change : changes) {
            const bool isParameter = change.oldValue || change.newValue;
            const bool wasThere = change.kind != veltext::DifferenceKind::Added;
            const bool isThere = change.kind != veltext::DifferenceKind::Removed;
            const auto side = [](bool is, const std::optional<std::string> &value) {
                return is ? std::optional(value.value_or("")) : std::nullopt;
            };
            note({change.path, isParameter}, side(wasThere, change.oldValue),
                 side(isThere, change.newValue), isThere ? "" : order.before(change.path));
        }
    } catch (const veltext::Error &refused) {
        return refused.message();
    }
    emit differ();
    return std::nullopt;
}

bool BaseDifferences::isBehind() const
{
    return revision_ != document_.revision();
}

// --- Questions ------------------------------------------------------------------------

std::vector<veltext::Change> BaseDifferences::all() const
{
    std::vector<veltext::Change> changes;
    changes.reserve(items_.size());
    for (const auto &[key, item] : items_) {
        changes.push_back(changeOf(key.path, key.isParameter, item.base, item.now));
    }
    return changes;
}

BaseDifferences::State BaseDifferences::stateOf(const std::string &path, bool isParameter) const
{
    if (items_.empty()) {
        return State::Same;
    }
    const auto found = items_.find({path, isParameter});
    if (found != items_.end()) {
        return found->second.base ? State::Changed : State::Added;
    }
    return !isParameter && losses_.contains(path) ? State::Lost : State::Same;
}

// --- Following the edits ----------------------------------------------------------------

void BaseDifferences::follow(const Edit &edit)
{
    if (document_.formerRevision() != revision_) {
        return;
    }
    revision_ = document_.revision();
    switch (edit.kind) {
    case Edit::Kind::SetValue:
        note({edit.path, true}, edit.oldText, edit.newText);
        break;
    case Edit::Kind::AddParameter:
        note({edit.path, true}, std::nullopt, edit.newText);
        break;
    case Edit::Kind::DeleteParameter:
        noteGone(edit, true);
        break;
    case Edit::Kind::AddObject:
        noteBlock(edit.path, edit.newText, true);
        break;
    case Edit::Kind::DeleteObject:
        noteGone(edit, false);
        break;
    case Edit::Kind::ReplaceObject:
        noteGone(edit, false);
        noteBlock(edit.path, edit.newText, true);
        break;
    }
    emit differ();
}

/// An item has changed from `former` to `now`.
void BaseDifferences::note(const Key &key, const std::optional<std::string> &former,
                           std::optional<std::string> now, std::string before)
{
    const auto place = items_.try_emplace(key, Item{former, former, {}}).first;
    Item &item = place->second;
    if (item.base && !item.now) {
        setGone(key, item.before, false);
    }
    item.now = std::move(now);
    item.before = std::move(before);
    if (item.base && !item.now) {
        setGone(key, item.before, true);
    }
    if (item.base == item.now) {
        items_.erase(place);
    }
}

void BaseDifferences::setGone(const Key &key, const std::string &before, bool isGone)
{
    const std::string object = parentPath(key.path);
    const std::string link = childPath(object, before);
    if (isGone) {
        ++losses_[object];
        gone_[link] = key;
        return;
    }
    if (--losses_[object] == 0) {
        losses_.erase(object);
    }
    const auto found = gone_.find(link);
    if (found != gone_.end() && found->second.path == key.path) {
        gone_.erase(found);
    }
}

bool BaseDifferences::isInBase(const std::string &path) const
{
    return std::ranges::none_of(std::array{true, false}, [&](bool isParameter) {
        const auto found = items_.find({path, isParameter});
        return found != items_.end() && !found->second.base;
    });
}

/// Goes on from a component of the base to the last one after it of those that are gone.
std::string BaseDifferences::lastGoneAfter(const std::string &object, std::string before) const
{
    for (auto next = gone_.find(childPath(object, before)); next != gone_.end();
         next = gone_.find(childPath(object, before))) {
        const std::string component = lastComponent(next->second.path);
        if (component == before) {
            break; // a parameter and an object of the same name
        }
        before = component;
    }
    return before;
}

/// Notes what an edit has deleted from its place.
void BaseDifferences::noteGone(const Edit &edit, bool isParameter)
{
    const std::string object = parentPath(edit.path);
    std::string before;
    const std::vector<CommandData::Child> siblings = document_.data().children(object);
    for (int i = std::min(edit.position, static_cast<int>(siblings.size())) - 1; i >= 0; --i) {
        const CommandData::Child &sibling = siblings[static_cast<std::size_t>(i)];
        if (!sibling.isLibrary && isInBase(childPath(object, sibling.component))) {
            before = sibling.component;
            break;
        }
    }
    before = lastGoneAfter(object, std::move(before));
    if (isParameter) {
        note({edit.path, true}, edit.oldText, std::nullopt, before);
    } else {
        noteBlock(edit.path, edit.oldText, false, before);
    }
}

/// Notes an object and all in it, which are there now, or are gone.
void BaseDifferences::noteBlock(const std::string &path, const std::string &block, bool isThere,
                                const std::string &before)
{
    struct Level
    {
        std::string path;
        std::string former; ///< the last item in it that is in the base
    };
    std::vector<Level> open;
    const auto noteItem = [&](const Key &key, const std::string &text) {
        std::string place = before;
        if (!open.empty() && !isThere) {
            place = lastGoneAfter(open.back().path, open.back().former);
        }
        if (!open.empty() && isInBase(key.path)) {
            open.back().former = lastComponent(key.path);
        }
        note(key, isThere ? std::nullopt : std::optional(text),
             isThere ? std::optional(text) : std::nullopt, isThere ? std::string() : place);
    };
    forEachLine(block, [&](std::string_view line) {
        if (line == blockEnd) {
            open.pop_back();
        } else if (!open.empty() && isAssignment(line)) {
            const std::size_t end = line.find(assignment);
            noteItem({childPath(open.back().path, std::string(line.substr(0, end))), true},
                     std::string(line.substr(end + assignment.size())));
        } else {
            const std::string object =
                open.empty() ? path : childPath(open.back().path, componentOfLabel(line));
            noteItem({object, false}, {});
            open.push_back({object, {}});
        }
    });
}

// --- Reverting --------------------------------------------------------------------------

std::vector<Edit> BaseDifferences::reverting(const veltext::Change &difference) const
{
    const Key key{difference.path, difference.oldValue || difference.newValue};
    const auto found = items_.find(key);
    if (found == items_.end()) {
        return {};
    }
    const Item &item = found->second;
    if (!item.base) {
        return {key.isParameter ? deletingParameter(key.path) : deletingObject(key.path)};
    }
    if (item.now) {
        return {settingValue(key.path, *item.base)};
    }
    return bringingBack(key, item);
}

const BaseDifferences::Item *BaseDifferences::goneAt(const std::string &path) const
{
    for (const bool isParameter : {true, false}) {
        const auto found = items_.find({path, isParameter});
        if (found != items_.end() && found->second.base && !found->second.now) {
            return &found->second;
        }
    }
    return nullptr;
}

/// The place of an item that comes back, among what is in its object now.
int BaseDifferences::placeAmong(const std::vector<CommandData::Child> &siblings,
                                const std::string &object, std::string before) const
{
    const auto isOwn = [](const CommandData::Child &child) { return !child.isLibrary; };
    for (std::size_t steps = 0; !before.empty() && steps <= items_.size(); ++steps) {
        const auto found = std::ranges::find_if(siblings, [&](const CommandData::Child &child) {
            return isOwn(child) && child.component == before;
        });
        if (found != siblings.end()) {
            return static_cast<int>(found - siblings.begin()) + 1;
        }
        const Item *gone = goneAt(childPath(object, before));
        if (gone == nullptr) {
            return static_cast<int>(siblings.size());
        }
        before = gone->before;
    }
    return static_cast<int>(std::ranges::find_if(siblings, isOwn) - siblings.begin());
}

/// Gives an edit that adds an item its place after `before`.
void BaseDifferences::place(Edit &edit, const std::string &before) const
{
    const std::string object = parentPath(edit.path);
    const std::vector<CommandData::Child> siblings = document_.data().children(object);
    edit.position = placeAmong(siblings, object, before);
    edit.parametersBefore = static_cast<int>(
        std::count_if(siblings.begin(), siblings.begin() + edit.position,
                      [](const CommandData::Child &child) { return child.isParameter; }));
}

std::vector<Edit> BaseDifferences::bringingBack(const Key &key, const Item &item) const
{
    std::vector<Edit> edits;
    const auto other = items_.find({key.path, !key.isParameter});
    if (other != items_.end() && other->second.now) { // it has the path now
        edits.push_back(key.isParameter ? deletingObject(key.path) : deletingParameter(key.path));
    }
    // The objects around it that are gone come back empty.
    std::vector<std::string> around;
    for (std::string object = parentPath(key.path); goneAt(object) != nullptr;
         object = parentPath(object)) {
        around.push_back(object);
    }
    const auto add = [&](Edit edit, const std::string &before, bool isFirst) {
        place(edit, isFirst ? before : std::string());
        edits.push_back(std::move(edit));
    };
    for (auto object = around.rbegin(); object != around.rend(); ++object) {
        add(addingObject(*object, labelOf(lastComponent(*object)) + "\nEND\n"),
            goneAt(*object)->before, object == around.rbegin());
    }
    add(key.isParameter ? addingParameter(key.path, *item.base)
                        : addingObject(key.path, blockOf(key.path)),
        item.before, around.empty());
    return edits;
}

/// The text of an object that is gone and all in it; see Edit.h for the form.
std::string BaseDifferences::blockOf(const std::string &path) const
{
    if (std::optional<std::string> block = blockInOrder(path)) {
        return *block;
    }
    std::string block;
    std::vector<std::string> open;
    for (auto next = items_.find({path, false});
         next != items_.end() && (next->first.path == path || isBelow(next->first.path, path));
         ++next) {
        const auto &[key, item] = *next;
        for (; !open.empty() && !isBelow(key.path, open.back()); open.pop_back()) {
            block.append(blockEnd).append("\n");
        }
        const std::string component = lastComponent(key.path);
        if (key.isParameter) {
            block.append(component).append(assignment).append(*item.base).append("\n");
        } else {
            block.append(labelOf(component)).append("\n");
            open.push_back(key.path);
        }
    }
    for (; !open.empty(); open.pop_back()) {
        block.append(blockEnd).append("\n");
    }
    return block;
}

/// The same in the order of the base; nothing if that is not known for all items.
std::optional<std::string> BaseDifferences::blockInOrder(const std::string &path) const
{
    std::size_t left = 0;
    for (auto next = items_.find({path, false});
         next != items_.end() && (next->first.path == path || isBelow(next->first.path, path));
         ++next) {
        ++left;
    }
    struct Level
    {
        std::string path;
        std::string former;
    };
    std::string block = labelOf(lastComponent(path)) + '\n';
    std::vector<Level> open{{path, {}}};
    --left;
    while (!open.empty()) {
        Level &level = open.back();
        const auto next = gone_.find(childPath(level.path, level.former));
        if (next == gone_.end()) {
            block.append(blockEnd).append("\n");
            open.pop_back();
            continue;
        }
        if (left-- == 0) {
            return std::nullopt; // in a circle
        }
        const Key &key = next->second;
        level.former = lastComponent(key.path);
        if (key.isParameter) {
            block.append(level.former).append(assignment);
            block.append(*items_.at(key).base).append("\n");
        } else {
            block.append(labelOf(level.former)).append("\n");
            open.push_back({key.path, {}});
        }
    }
    return left == 0 ? std::optional(block) : std::nullopt;
}

} // namespace velEditor
