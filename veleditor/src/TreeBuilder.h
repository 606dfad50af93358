// Makes the rows of the command tree from the database.
//
// The rows are made apart from any view, which takes the finished tree over in
// one step. The walk keeps its own stack, so that no depth of nesting is too
// deep for it, and one growing path text.
#pragma once

#include "velparser/api/velparser.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velEditor {

class VELTreeItem;

/// The finished rows, and those that the tree view keeps in mind.
struct BuiltTree
{
    std::unique_ptr<VELTreeItem> root;

    /// The last filled top-level object whose path begins with "/FLOW"; the
    /// last row made directly under it; and its "EXPERT PARAMETERS" section.
    /// Null where there is none; not owned.
    VELTreeItem *flowItem = nullptr;
    VELTreeItem *lastFlowChild = nullptr;
    VELTreeItem *expertItem = nullptr;
};

/// What is not shown: library data and expert items, unless the environment
/// variables VELEDITOR_SHOW_LIBRARY and ZOT5_VEL_EXPERT exist.
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

    /// Leaves the current path of the database as it was, also on failure.
    ~TreeBuilder();

    TreeBuilder(const TreeBuilder &) = delete;
    TreeBuilder &operator=(const TreeBuilder &) = delete;

    /// Throws `error` ("getChildList : ", "pushPath : " or "popPath : " and the
    /// database's text). To be called once.
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
    std::string path_{"/"}; ///< of the object being filled, or of its child in hand
    std::vector<Level> levels_;
    BuiltTree tree_;
};

} // namespace velEditor
