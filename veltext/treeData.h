// The data of a tree as a list of paths and values.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct velHandle;

namespace veltext {

class TextEdit;

/// The nodes of a tree in stored order, found by their paths.
class TreeData
{
public:
    /// A node: an object, or a parameter with its value.
    struct Item
    {
        std::string path;
        std::optional<std::string> value; ///< of a parameter only
    };

    TreeData() = default;
    /// Copies all nodes of a tree except the root. Throws bad_alloc.
    explicit TreeData(velHandle *handle);

    /// Adds a node at the end. If two nodes have the same path, `find` gives the first.
    void add(Item item);

    /// In stored order.
    [[nodiscard]] const std::vector<Item> &items() const { return items_; }
    /// Null if no node has this path. The pointer is valid until the next `add`.
    [[nodiscard]] const Item *find(const std::string &path) const;

private:
    std::vector<Item> items_;
    std::unordered_map<std::string, std::size_t> places_;
};

/// Whether both have the same objects, parameters and values, in any order.
[[nodiscard]] bool haveSameData(const TreeData &a, const TreeData &b);

/// The former paths of moved parameters, by their new paths.
using Moves = std::unordered_map<std::string, std::string>;

/// Edits a text with the data `before` so that it has the data `after`. A moved
/// parameter keeps the comment on its line.
void editTowards(const TreeData &before, const TreeData &after, const Moves &moves, TextEdit *edit);

} // namespace veltext
