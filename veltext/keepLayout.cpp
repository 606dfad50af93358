// Edits a text towards other data, and reads the result again.
#include "veltext/keepLayout.h"

#include "veltext/error.h"
#include "veltext/textEdit.h"
#include "veltext/valueEdit.h"

#include "velapilt/src/velapilt.h"

#include <new>
#include <utility>

namespace veltext {

namespace {

bool isBelow(const std::string &path, const std::string &object)
{
    return path.size() > object.size() && path.starts_with(object) && path[object.size()] == '/';
}

/// `path` after `from` was renamed to `to`; unchanged if it is not at or below `from`.
std::string pathAfter(const std::string &path, const std::string &from, const std::string &to)
{
    return path == from || isBelow(path, from) ? to + path.substr(from.size()) : path;
}

TreeData dataOf(const SourceText &text)
{
    const velHandlePtr handle(velCreateHandle());
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    const velArray lines = text.parsedLines();
    require(parseVELData(handle.get(), &lines, 0));
    if (velDeepestBlock(handle.get()) > deepestKept) {
        throw Error("objects nest deeper than " + std::to_string(deepestKept) + " levels");
    }
    return TreeData(handle.get());
}

std::string withNewNames(const SourceText &text, const std::vector<PathChange> &changes)
{
    TextEdit names(text);
    for (const PathChange &change : changes) {
        const bool isStated = names.tree().find(change.path) != StatementTree::none;
        if (change.kind == PathChange::Kind::Renamed && isStated) {
            names.rename(change.path, change.newPath.substr(change.newPath.rfind('/') + 1));
        }
    }
    return names.bytes();
}

/// Adds the objects that `wanted` does not have and that stay, with everything in
/// them.
void addWhatStays(const TreeData &before, const StaysAsItIs &stays, TreeData *wanted)
{
    std::string kept; // everything below it stays too
    for (const TreeData::Item &item : before.items()) {
        if (!kept.empty() && isBelow(item.path, kept)) {
            wanted->add(item);
        } else if (!item.value && wanted->find(item.path) == nullptr && stays(item.path)) {
            kept = item.path;
            wanted->add(item);
        }
    }
}

/// Why the edited text does not have the data. The database accepts every text as
/// a value; a file does not.
std::string reasonFor(const TreeData &before, const TreeData &wanted)
{
    for (const TreeData::Item &item : wanted.items()) {
        const TreeData::Item *was = before.find(item.path);
        const bool isNew = item.value && (was == nullptr || was->value != item.value);
        const std::string fault = isNew ? storageFault(*item.value) : std::string();
        if (!fault.empty()) {
            return item.path + ": " + fault;
        }
    }
    return "reading the edited text again would give other data";
}

bool hasData(const SourceText &text, const TreeData &wanted)
{
    try {
        return haveSameData(dataOf(text), wanted);
    } catch (const Error &) {
        return false;
    }
}

} // namespace

Moves movesIn(const std::vector<PathChange> &changes)
{
    Moves moves;
    for (const PathChange &change : changes) {
        if (change.kind == PathChange::Kind::Moved) {
            const auto earlier = moves.extract(change.path);
            moves[change.newPath] = earlier ? earlier.mapped() : change.path;
            continue;
        }
        Moves after;
        for (const auto &[now, before] : moves) {
            after[pathAfter(now, change.path, change.newPath)] =
                pathAfter(before, change.path, change.newPath);
        }
        moves = std::move(after);
    }
    return moves;
}

// 1. In the text, new names replace the old names.
// 2. All other differences of the data are edited into that text.
// 3. The result is read again.
std::string keepLayout(const SourceText &text, TreeData wanted,
                       const std::vector<PathChange> &changes, const StaysAsItIs &stays)
{
    const SourceText named(withNewNames(text, changes));
    const TreeData before = dataOf(named);
    if (stays) {
        addWhatStays(before, stays, &wanted);
    }
    TextEdit edit(named);
    editTowards(before, wanted, movesIn(changes), &edit);
    std::string bytes = edit.bytes();
    if (!hasData(SourceText(bytes), wanted)) {
        throw Error(reasonFor(before, wanted));
    }
    return bytes;
}

} // namespace veltext
