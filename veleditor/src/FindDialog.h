// Asks for a text and steps from match to match through the command tree.
//
// The dialog blocks the other windows while it is visible, but it is shown
// without a loop of its own. It belongs to the tree, remembers where the next
// search starts, and must be told when rows disappear.
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

    /// Where the next search starts; null: nowhere, it reports "Not Found" and
    /// the one after it starts at the top. Not owned.
    [[nodiscard]] VELTreeItem *nextItem() const { return nextItem_; }
    void setNextItem(VELTreeItem *item) { nextItem_ = item; }

public slots:
    /// One step: shows and selects the next match, or says that there is none.
    void find();

private:
    void reportNotFound(const QString &text);

    VELTree *tree_;
    QLineEdit *entry_;
    VELTreeItem *nextItem_ = nullptr;
};

} // namespace velEditor
