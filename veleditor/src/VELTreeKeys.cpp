// The tree's keys that have no entry in the menu bar.
#include "veleditor/src/RowHelp.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QWhatsThis>

namespace velEditor {

void VELTree::openAll()
{
    expandAll();
    if (VELTreeItem *row = selectedItem()) {
        scrollToItem(row);
    }
}

void VELTree::closeAll()
{
    collapseAll();
    VELTreeItem *top = firstItem();
    if (top == nullptr) {
        return;
    }
    top->setExpanded(true);
    QTreeWidgetItem *row = selectedItem();
    while (row != nullptr && row->parent() != nullptr && !row->parent()->isExpanded()) {
        row = row->parent();
    }
    if (row != nullptr) {
        setCurrentItem(row);
    }
}

// Expand All and the search also mark rows without children as open. Before the
// key Left goes to the parent, it would close such a row, and the user would see
// nothing.
QModelIndex VELTree::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    QTreeWidgetItem *row = currentItem();
    if (row != nullptr && row->childCount() == 0) {
        row->setExpanded(false);
    }
    return QTreeWidget::moveCursor(action, modifiers);
}

void VELTree::copyPath() const
{
    if (const VELTreeItem *row = selectedItem()) {
        QGuiApplication::clipboard()->setText(fromBytes(row->path()));
    }
}

void VELTree::copyValue() const
{
    const VELTreeItem *row = selectedItem();
    if (row != nullptr && row->hasValue()) {
        QGuiApplication::clipboard()->setText(row->value());
    }
}

void VELTree::explainRow()
{
    if (const VELTreeItem *row = selectedItem()) {
        QWhatsThis::showText(placeBesideRow(), rowWhatsThis(*row), this);
    }
}

QPoint VELTree::placeBesideRow() const
{
    const VELTreeItem *row = selectedItem();
    const QRect shown = viewport()->rect();
    const QRect place = row != nullptr ? visualItemRect(row) & shown : QRect();
    if (place.isEmpty()) {
        return viewport()->mapToGlobal(shown.topLeft());
    }
    return viewport()->mapToGlobal(place.bottomLeft() + QPoint(indentation(), 0));
}

} // namespace velEditor
