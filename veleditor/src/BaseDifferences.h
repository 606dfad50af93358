// How the data of a document differs from a base: the data at some moment, or a text.
//
// The differences are brought up to date with every edit, at a cost that depends on the
// edit alone, not on the file. Where the data was changed by something else than an
// edit, they are wrong until `reset` or `compareWith`: see `isBehind`.
//
// As everywhere, the order of items is not a difference, and a missing value is equal
// to an empty one. Still, the place that an item had in the base is known as long as it
// is gone.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veleditor/src/Edit.h"
#include "veltext/commandText.h"

#include <QObject>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velEditor {

class Document;

class BaseDifferences : public QObject
{
    Q_OBJECT

public:
    /// How an item of the data differs.
    enum class State {
        Same,
        Changed, ///< another value
        Added,
        Lost, ///< an object that stayed, but something directly in it is gone
    };

    /// The present data is the base. The document (not owned) outlives this object.
    explicit BaseDifferences(const Document &document, QObject *parent = nullptr);

    /// From now on the present data is the base.
    void reset();

    /// From now on a text is the base. Returns why it cannot be, with the line, and
    /// calls it `name`; the base is then the former one.
    [[nodiscard]] Message compareWith(const std::string &text, const std::string &name);

    /// Whether the data was changed by something else than an edit.
    [[nodiscard]] bool isBehind() const;

    [[nodiscard]] bool isEmpty() const { return items_.empty(); }

    /// All differences from the base to the data, by path; an object comes before what
    /// is in it.
    [[nodiscard]] std::vector<veltext::Change> all() const;

    /// The state of an object or parameter that the data has.
    [[nodiscard]] State stateOf(const std::string &path, bool isParameter) const;

    /// The edits that make an item as it is in the base, and all below it: what was
    /// added is deleted, what is gone comes back at its place, with the objects around
    /// it if they are gone, too. None if it does not differ.
    [[nodiscard]] std::vector<Edit> reverting(const veltext::Change &difference) const;

signals:
    /// There may be other differences.
    void differ();

private:
    /// An object or parameter; both may have the same path.
    struct Key
    {
        std::string path;
        bool isParameter;
    };

    /// Puts an object before what is in it, and that before the siblings of the object.
    struct InTreeOrder
    {
        bool operator()(const Key &a, const Key &b) const;
    };

    /// An item that differs. The text of an object is empty.
    struct Item
    {
        std::optional<std::string> base; ///< none: it is not in the base
        std::optional<std::string> now;  ///< none: it is gone
        /// If it is gone: the component of the item directly before it in the base,
        /// empty for the first one.
        std::string before;
    };

    using Items = std::map<Key, Item, InTreeOrder>;

    void follow(const Edit &edit);
    void note(const Key &key, const std::optional<std::string> &former,
              std::optional<std::string> now, std::string before = {});
    void noteGone(const Edit &edit, bool isParameter);
    void noteBlock(const std::string &path, const std::string &block, bool isThere,
                   const std::string &before = {});
    void setGone(const Key &key, const std::string &before, bool isGone);
    void clear();
    [[nodiscard]] bool isInBase(const std::string &path) const;
    [[nodiscard]] std::string lastGoneAfter(const std::string &object, std::string before) const;
    [[nodiscard]] int placeAmong(const std::vector<CommandData::Child> &siblings,
                                 const std::string &object, std::string before) const;
    void place(Edit &edit, const std::string &before) const;
    [[nodiscard]] const Item *goneAt(const std::string &path) const;
    [[nodiscard]] std::string blockOf(const std::string &path) const;
    [[nodiscard]] std::optional<std::string> blockInOrder(const std::string &path) const;
    [[nodiscard]] std::vector<Edit> bringingBack(const Key &key, const Item &item) const;

    const Document &document_; ///< not owned
    Items items_;              ///< none of them is equal in both
    /// For each object, how many items directly in it are gone.
    std::map<std::string, int> losses_;
    /// What is gone, by its object and the component `before` it, as a path.
    std::map<std::string, Key> gone_;
    std::uint64_t revision_; ///< the state of the data that `items_` is about
};

} // namespace velEditor
