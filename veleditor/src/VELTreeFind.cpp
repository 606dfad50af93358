// The search of the tree.
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/TreeSearch.h"
#include "veleditor/src/VELTree.h"

namespace velEditor {

VELTreeItem *VELTree::firstItem() const
{
    return VELTreeItem::from(topLevelItem(0));
}

void VELTree::showMatch(VELTreeItem &match)
{
    for (QTreeWidgetItem *row = &match; row != nullptr; row = row->parent()) {
        row->setExpanded(true);
    }
    scrollToItem(&match);
    setCurrentItem(&match);
}

void VELTree::doFind()
{
    QString text;
    if (findDialog_ != nullptr) {
        text = findDialog_->searchText();
        delete findDialog_;
    }
    findDialog_ = new FindDialog(this);
    findDialog_->setSearchText(text);

    VELTreeItem *selected = selectedItem();
    VELTreeItem *start = selected != nullptr ? rowAfter(*selected) : nullptr;
    findDialog_->setNextItem(start != nullptr ? start : firstItem());
    findDialog_->showForTyping();
}

void VELTree::doFindNext()
{
    if (findDialog_ == nullptr) {
        doFind();
    } else {
        findDialog_->find();
    }
}

} // namespace velEditor
