// Compares the data with a text, object by object.
#include "veleditor/src/DataChange.h"

#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "veltext/commandText.h"
#include "veltext/error.h"
#include "veltext/treeData.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <utility>

namespace velEditor {

namespace {

/// An item of the text, which lists all of them, parents before their children.
struct Item
{
    std::string component;
    std::optional<std::string> value; ///< of a parameter
    std::size_t end = 0;              ///< the number of the item after all below it
};

using Items = std::vector<Item>;

/// All items; the first one is the root.
Items itemsOf(const veltext::CommandText &text)
{
    const veltext::TreeData data(text.tree());
    Items items{{"", std::nullopt, 0}};
    items.reserve(data.items().size() + 1);
    std::vector<std::string> open{"/"}; // the objects around the next item
    std::vector<std::size_t> numbers{0};
    const auto close = [&] {
        items[numbers.back()].end = items.size();
        open.pop_back();
        numbers.pop_back();
    };
    for (const veltext::TreeData::Item &item : data.items()) {
        while (open.back() != parentPath(item.path)) {
            close();
        }
        items.push_back({lastComponent(item.path), item.value, items.size() + 1});
        if (!item.value) {
            open.push_back(item.path);
            numbers.push_back(items.size() - 1);
        }
    }
    while (!open.empty()) {
        close();
    }
    return items;
}

/// The text of an object and all below it; see Edit.h for the form.
std::string blockOf(const Items &items, std::size_t object)
{
    std::string block;
    std::vector<std::size_t> ends;
    const auto close = [&](std::size_t next) {
        for (; !ends.empty() && ends.back() <= next; ends.pop_back()) {
            block += "END\n";
        }
    };
    for (std::size_t i = object; i < items[object].end; ++i) {
        close(i);
        const Item &item = items[i];
        if (item.value) {
            block.append(item.component).append(" = ").append(*item.value) += '\n';
        } else {
            block.append(labelOf(item.component)) += '\n';
            ends.push_back(item.end);
        }
    }
    close(items[object].end);
    return block;
}

/// What two items have in common that are the same: a parameter may have become a
/// singleton of its name.
using Key = std::pair<std::string, bool>;

Key keyOf(const Item &item)
{
    return {item.component, item.value.has_value()};
}

class Comparison
{
public:
    Comparison(const CommandData &data, const Items &items, EditDetail detail)
        : data_(data), items_(items), detail_(detail)
    {
    }

    std::vector<Edit> run()
    {
        pending_.push_back({"/", 0});
        while (!pending_.empty()) {
            const auto [path, object] = std::move(pending_.back());
            pending_.pop_back();
            compare(path, object);
        }
        return std::move(edits_);
    }

private:
    /// An object that both have.
    struct Object
    {
        std::string path;
        std::size_t item;
    };

    /// The siblings before an item.
    class Siblings
    {
    public:
        void pass(bool isParameter)
        {
            ++count_;
            parameters_ += isParameter ? 1 : 0;
        }

        void giveTo(Edit &edit) const
        {
            edit.position = count_;
            edit.parametersBefore = parameters_;
        }

    private:
        int count_ = 0;
        int parameters_ = 0;
    };

    /// The places of the children that stay: those that come in the same order.
    using Kept = std::map<Key, std::size_t>;

    [[nodiscard]] std::vector<std::size_t> childrenOf(std::size_t object) const
    {
        std::vector<std::size_t> children;
        for (std::size_t i = object + 1; i < items_[object].end; i = items_[i].end) {
            children.push_back(i);
        }
        return children;
    }

    [[nodiscard]] Kept keptOf(const std::vector<CommandData::Child> &now,
                              const std::vector<std::size_t> &wanted) const
    {
        std::map<Key, std::size_t> places;
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (!now[i].isLibrary) {
                places.emplace(Key(now[i].component, now[i].isParameter), i);
            }
        }
        Kept kept;
        std::size_t next = 0;
        for (const std::size_t item : wanted) {
            const auto found = places.find(keyOf(items_[item]));
            if (found != places.end() && found->second >= next) {
                kept.insert(*found);
                next = found->second + 1;
            }
        }
        return kept;
    }

    void compare(const std::string &path, std::size_t object)
    {
        const std::vector<CommandData::Child> now = data_.children(path);
        const std::vector<std::size_t> wanted = childrenOf(object);
        const Kept kept = keptOf(now, wanted);

        std::vector<CommandData::Child> left;
        Siblings before;
        for (const CommandData::Child &child : now) {
            if (child.isLibrary || kept.contains({child.component, child.isParameter})) {
                before.pass(child.isParameter);
                left.push_back(child);
            } else {
                remove(childPath(path, child.component), child.isParameter, before);
            }
        }
        before = {};
        auto next = left.begin();
        for (const std::size_t item : wanted) {
            for (; next != left.end() && next->isLibrary; ++next) {
                before.pass(next->isParameter);
            }
            if (kept.contains(keyOf(items_[item]))) {
                keep(childPath(path, items_[item].component), item, before);
                ++next;
            } else {
                add(childPath(path, items_[item].component), item, before);
            }
            before.pass(items_[item].value.has_value());
        }
    }

    void remove(const std::string &path, bool isParameter, const Siblings &before)
    {
        Edit edit = isParameter ? deletingParameter(path) : deletingObject(path);
        edit.oldText = isParameter ? data_.value(path).value_or("") : data_.block(path);
        before.giveTo(edit);
        edits_.push_back(std::move(edit));
    }

    void keep(const std::string &path, std::size_t item, const Siblings &before)
    {
        const Item &wanted = items_[item];
        if (!wanted.value) {
            keepObject(path, item, before);
            return;
        }
        const std::string value = data_.value(path).value_or("");
        if (value != *wanted.value) {
            edits_.push_back(settingValue(path, *wanted.value));
            edits_.back().oldText = value;
        }
    }

    void keepObject(const std::string &path, std::size_t item, const Siblings &before)
    {
        if (detail_ == EditDetail::Items) {
            pending_.push_back({path, item});
            return;
        }
        Edit edit{Edit::Kind::ReplaceObject, path, data_.block(path), blockOf(items_, item)};
        before.giveTo(edit);
        if (edit.oldText != edit.newText) {
            edits_.push_back(std::move(edit));
        }
    }

    void add(const std::string &path, std::size_t item, const Siblings &before)
    {
        const Item &wanted = items_[item];
        Edit edit = wanted.value ? addingParameter(path, *wanted.value)
                                 : addingObject(path, blockOf(items_, item));
        before.giveTo(edit);
        edits_.push_back(std::move(edit));
    }

    const CommandData &data_;
    const Items &items_;
    EditDetail detail_;
    std::vector<Object> pending_;
    std::vector<Edit> edits_;
};

} // namespace

std::vector<Edit> editsTowards(const CommandData &data, const veltext::CommandText &wanted,
                               EditDetail detail)
{
    const Items items = itemsOf(wanted);
    return Comparison(data, items, detail).run();
}

Message changeTo(Document &document, UndoHistory &history, const std::string &text,
                 const QString &name)
{
    try {
        const veltext::CommandText wanted(text, document.file());
        const UndoGroup group(history, name);
        for (Edit &edit : editsTowards(document.data(), wanted)) {
            if (Message failure = document.apply(std::move(edit))) {
                return failure;
            }
        }
    } catch (const veltext::Error &refused) {
        return refused.message();
    }
    static_cast<void>(document.validate());
    return std::nullopt;
}

} // namespace velEditor
