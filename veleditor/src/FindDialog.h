// Asks for a text and goes from match to match in the command tree.
//
// The visible dialog blocks the other windows, but it does not run its own event
// loop. It belongs to the tree, remembers where the next search starts, and must be
// informed when rows are deleted.
#pragma once

#include <QDialog>

class QLineEdit;

namespace velEditor {

class VELTree;
class VELTreeItem;

class FindDialog : public QDialog
{
    Q_OBJECT

public:
    explicit FindDialog(VELTree *tree);

    [[nodiscard]] QString searchText() const;
    void setSearchText(const QString &text);

    /// Selects the whole text, so that typing replaces it, and shows the dialog.
    void showForTyping();

    /// The row where the next search starts, not owned. If it is null, the next
    /// search reports "Not Found", and the one after it starts at the top.
    [[nodiscard]] VELTreeItem *nextItem() const { return nextItem_; }
    void setNextItem(VELTreeItem *item) { nextItem_ = item; }

public slots:
    /// Shows and selects the next match, or says that there is none.
    void find();

private:
    void reportNotFound(const QString &text);

    VELTree *tree_;
    QLineEdit *entry_;
    VELTreeItem *nextItem_ = nullptr;
};

} // namespace velEditor
