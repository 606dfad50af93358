// All that a tree holds, apart from its order.
#pragma once

#include "velapilt/src/velapilt.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

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
    /// Copies all of a tree but the root. Throws bad_alloc.
    explicit TreeData(velHandle *handle);

    /// Adds a node after the others; of two at a path, the first is found.
    void add(Item item);

    /// In stored order.
    [[nodiscard]] const std::vector<Item> &items() const { return items_; }
    /// Null where no node has this path; valid until the next add.
    [[nodiscard]] const Item *find(const std::string &path) const;

private:
    std::vector<Item> items_;
    std::unordered_map<std::string, std::size_t> places_;
};

/// As for two trees (treeDiff.h): whether both hold the same objects, parameters
/// and values, in whatever order.
[[nodiscard]] bool haveSameData(const TreeData &a, const TreeData &b);

/// Former paths of parameters, by those that they have moved to.
using Moves = std::unordered_map<std::string, std::string>;

/// Edits a text that holds the data `before` so that it holds `after`. What has
/// moved takes the remark on its line along.
void editTowards(const TreeData &before, const TreeData &after, const Moves &moves, TextEdit *edit);

} // namespace veltext
