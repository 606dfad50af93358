// How the tree keeps what the user sees when rows are made again, and shows what
// undo and redo have changed.
#include "veleditor/src/Document.h"
#include "veleditor/src/VELTree.h"

#include <QScrollBar>

#include <cstdint>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace velEditor {

namespace {

/// Every open row that is seen when scrolled to, from the topmost on.
template <typename IsOpen, typename Use>
void forEachOpenRow(VELTreeItem *top, IsOpen isOpen, Use use)
{
    std::vector<std::pair<VELTreeItem *, std::string>> rows;
    if (top != nullptr) {
        rows.emplace_back(top, "/");
    }
    while (!rows.empty()) {
        const auto [row, path] = std::move(rows.back());
        rows.pop_back();
        if (row->childCount() == 0 || !isOpen(*row, path)) {
            continue;
        }
        use(*row, path);
        for (int i = 0; i < row->childCount(); ++i) {
            VELTreeItem *child = VELTreeItem::from(row->child(i));
            rows.emplace_back(child, childPath(path, child->component()));
        }
    }
}

bool isAboutParameter(const Edit &edit)
{
    return edit.kind == Edit::Kind::SetValue || edit.kind == Edit::Kind::AddParameter;
}

bool leavesNothing(const Edit &edit)
{
    return edit.kind == Edit::Kind::DeleteParameter || edit.kind == Edit::Kind::DeleteObject;
}

} // namespace

/// Builds the tree with the same rows open and selected as far as they are there
/// again, at the same place of the view.
void VELTree::rebuildInPlace()
{
    std::unordered_set<std::string> open;
    forEachOpenRow(
        firstItem(), [](const VELTreeItem &row, const std::string &) { return row.isExpanded(); },
        [&](const VELTreeItem &, const std::string &path) { open.insert(path); });
    const VELTreeItem *selected = selectedItem();
    const bool isParameter = selected != nullptr && selected->hasValue();
    const std::string selectedPath = selected != nullptr ? selected->path() : std::string();
    const int place = verticalScrollBar()->value();

    buildTree();
    scheduleDelayedItemsLayout(); // one layout for all rows
    forEachOpenRow(
        firstItem(),
        [&](const VELTreeItem &, const std::string &path) { return open.count(path) > 0; },
        [](VELTreeItem &row, const std::string &) { row.setExpanded(true); });
    if (VELTreeItem *row = selectedPath.empty() ? nullptr : rowAt(selectedPath, isParameter)) {
        setCurrentItem(row);
    }
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(place);
}

void VELTree::showAtOnce(const std::function<void()> &change)
{
    const std::uint64_t before = document_->revision();
    document_->disconnect(this);
    change();
    followDocument();
    showMark(document_->isModified());
    if (document_->revision() != before) {
        rebuildInPlace();
    }
}

void VELTree::showChange(const Edit &edit)
{
    std::string path = edit.path;
    VELTreeItem *row = leavesNothing(edit) ? nullptr : rowAt(path, isAboutParameter(edit));
    while (row == nullptr && path != "/") {
        path = parentPath(path);
        row = rowAt(path, false);
    }
    if (row == nullptr) {
        return;
    }
    for (QTreeWidgetItem *above = row->parent(); above != nullptr; above = above->parent()) {
        above->setExpanded(true);
    }
    setCurrentItem(row);
    scrollToItem(row);
}

} // namespace velEditor
