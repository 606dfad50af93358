// Makes the rows of the command tree from the database.
//
// The rows are made outside the view, which receives the finished tree in one step.
// The walk has its own stack, so that nesting may have any depth, and one text for
// the current path.
#pragma once

#include "velparser/api/velparser.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velEditor {

class VELTreeItem;

/// The finished rows, and those that the tree view remembers.
struct BuiltTree
{
    std::unique_ptr<VELTreeItem> root;

    /// The last filled top-level object whose path begins with "/FLOW"; the last row
    /// made directly under it; and its "EXPERT PARAMETERS" section. Null if there is
    /// none; not owned.
    VELTreeItem *flowItem = nullptr;
    VELTreeItem *lastFlowChild = nullptr;
    VELTreeItem *expertItem = nullptr;
};

/// Decides which items are hidden: library data and expert items, unless the
/// environment variables VELEDITOR_SHOW_LIBRARY and ZOT5_VEL_EXPERT are set.
class HiddenItems
{
public:
    HiddenItems();

    [[nodiscard]] bool hide(const std::string &path) const;

private:
    bool showLibrary_;
    bool showExpert_;
};

class TreeBuilder
{
public:
    TreeBuilder() = default;

    /// Restores the current path of the database, also after a failure.
    ~TreeBuilder();

    TreeBuilder(const TreeBuilder &) = delete;
    TreeBuilder &operator=(const TreeBuilder &) = delete;

    /// Builds the tree; call it only once. Throws `error` ("getChildList : ",
    /// "pushPath : " or "popPath : " and the database's text).
    [[nodiscard]] BuiltTree build();

private:
    /// An object that is being filled.
    struct Level
    {
        VELTreeItem *item;
        VELTreeItem *lastChild; ///< the row that was made last under it
        bool isFlow;
        std::size_t pathLength; ///< of its parent's path in `path_`
        std::vector<velChildInfo> children;
        std::size_t next; ///< the child to be shown next
    };

    void enter(VELTreeItem *item, std::size_t parentPathLength);
    void leave();
    void showNextChild();
    VELTreeItem *makeItem(Level &level, const velChildInfo &child,
                          const std::optional<std::string> &value, std::string component);

    HiddenItems hidden_;
    std::string path_{"/"}; ///< of the object being filled, or of its current child
    std::vector<Level> levels_;
    BuiltTree tree_;
};

} // namespace velEditor
