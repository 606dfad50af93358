// The command tree: shows the data of a document as two columns of names and values,
// and has the operations with which the user changes it.
//
// The tree is built as a whole from the database. A rebuild invalidates every pointer
// to a row. The operations change the document, and the rows follow its signals. The
// title of the tree's parent widget shows the mark of unsaved changes.
#pragma once

#include "veleditor/src/BaseDifferences.h"
#include "veleditor/src/Edit.h"
#include "veleditor/src/VELTreeItem.h"

#include <QPoint>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <string>

namespace velEditor {

class Document;
class EditParamDialog;
class ErrorDialog;
class FindDialog;

class VELTree : public QTreeWidget
{
    Q_OBJECT

public:
    /// Builds the tree; throws like `buildTree`. The document is not owned and must
    /// outlive the tree. Without one, the tree makes its own, without a file.
    VELTree(QWidget *parent, const QString &name, Document *document = nullptr);
    ~VELTree() override;

    // --- Unsaved changes of the document --------------------------------------

    void setModified();
    void clearModified();
    [[nodiscard]] bool isModified() const;

    // --- What differs from the disk ---------------------------------------------

    /// The rows that these differences are about have a mark from now on. Not owned;
    /// they outlive the tree, or end with a call that passes null.
    void showDifferences(const BaseDifferences *differences);

    /// What a row, or a loss in its object, differs in.
    [[nodiscard]] BaseDifferences::State differenceOf(const VELTreeItem &row) const;

    // --- Rows (not owned; null if there is none) ----------------------------

    /// The top-level flow object, the last row built directly under it, and its
    /// section of expert parameters.
    [[nodiscard]] VELTreeItem *flowItem() const { return flowItem_; }
    [[nodiscard]] VELTreeItem *lastFlowChild() const { return lastFlowChild_; }
    [[nodiscard]] VELTreeItem *expertItem() const { return expertItem_; }

    /// The row that the last `addParameter` made.
    [[nodiscard]] VELTreeItem *lastAddedItem() const { return lastAddedItem_; }

    /// The selected row, which may differ from the row with the keyboard focus.
    [[nodiscard]] VELTreeItem *selectedItem() const;

    /// The topmost row.
    [[nodiscard]] VELTreeItem *firstItem() const;

    /// Opens a row and all above it, scrolls to it and selects it.
    void showMatch(VELTreeItem &match);

    /// Opens all above the row that an edit has changed, brings it into view and
    /// selects it; where no such row is shown, the one of the object around it.
    void showChange(const Edit &edit);

    /// Makes many changes of the document and shows them at once, with the same rows open
    /// and selected as far as they are still there.
    void showAtOnce(const std::function<void()> &change);

    // --- Whole tree and single rows, by key ----------------------------------

    /// Open every row, or close all except the topmost. The selected row, or the
    /// nearest one above it that is still shown, stays visible and selected.
    void openAll();
    void closeAll();

    /// Copy the database path or the value of the selected row to the clipboard; do
    /// nothing if there is none.
    void copyPath() const;
    void copyValue() const;

    /// Shows the rule of the selected row next to it.
    void explainRow();

    /// The place for a menu or an explanation of the selected row, in global
    /// coordinates: below the row, or at the top of the tree if no row is selected.
    [[nodiscard]] QPoint placeBesideRow() const;

public slots:
    /// Builds all rows again. Throws `error` if the database cannot be read; see
    /// TreeBuilder.
    void buildTree();

    /// Asks for a new value and stores it. If the value is not valid, shows its
    /// errors and restores the former value; the mark of unsaved changes stays. When
    /// the user closes the errors, the dialog opens again with the typed text.
    void editParam(velEditor::VELTreeItem *item);
    void editQListItem(QTreeWidgetItem *item);

    /// Adds the section of expert parameters to the flow object, once. If there is no
    /// flow object, makes one and builds the tree again, which throws like
    /// `buildTree`.
    void addExpertParamObj();

    /// Asks for a name and a value and adds the parameter to the selected object, or
    /// to the object of the selected parameter.
    void addParameter();
    void editCurrParameter();

    /// Deletes the selected parameter if the user agrees.
    void deleteParam();

    /// Sorts by a column; a negative number keeps the order of the database from now
    /// on.
    void setSorting(int column, bool ascending);
    void setSorting(int column);

    /// Shows the dialog for the text to find; the search starts after the selected
    /// row.
    void doFind();

    /// Finds the next match; shows the dialog if nothing was searched yet.
    void doFindNext();

    /// Opens the row at a global point and everything below it if the row was closed, else
    /// closes them.
    void openOrClose(QTreeWidgetItem *item, QPoint point, int column);

signals:
    /// The user has requested a menu by key. (The right button opens and closes
    /// branches.)
    void menuRequested(QPoint globalPoint);

    /// The right button was released on a row, or on none.
    void rightButtonClicked(QTreeWidgetItem *item, QPoint globalPoint, int column);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void updateGeometries() override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    /// Whether all columns would fit the view without a vertical scroll bar.
    [[nodiscard]] bool columnsFit() const;
    void keepFromMovingSideways();

    /// A value that was not valid, until the user closes its errors.
    struct RefusedValue
    {
        VELTreeItem *item = nullptr;
        const ErrorDialog *errors = nullptr;     ///< only to compare; may be deleted
        std::unique_ptr<EditParamDialog> dialog; ///< as the user left it
    };

    void setOpen(QTreeWidgetItem *item, bool open);
    void askForValue(VELTreeItem &item, std::unique_ptr<EditParamDialog> dialog);
    void askAgain(const ErrorDialog *errors);
    [[nodiscard]] bool storeValue(VELTreeItem &item, const std::string &value);
    ErrorDialog *validateValue(VELTreeItem &item, const QString &former);
    void refuseEdit(const QString &name);
    ErrorDialog *showErrors(const std::string &messages);
    void showNewParameter(VELTreeItem &target, const std::string &name, VELTreeItem *former);
    void showExpertSection();
    void removeRow(VELTreeItem &row);
    void forget(const VELTreeItem &item);

    // --- Following the document ---------------------------------------------
    // Hidden items stay hidden.

    void followDocument();
    void rebuildInPlace();
    void showMark(bool modified);
    void showValue(const std::string &path, const std::string &value);
    void showAddedParameter(const std::string &path, int position);
    void showAddedObject(const std::string &path, int position);
    void showRemovedParameter(const std::string &path);
    VELTreeItem *addParameterRow(VELTreeItem &object, const VELTreeItem *after,
                                 const std::string &name);
    [[nodiscard]] VELTreeItem *rowAt(const std::string &path, bool isParameter) const;
    [[nodiscard]] VELTreeItem *rowBefore(const VELTreeItem &object, int position) const;

    Document *document_;              ///< a child if the tree made it
    bool isRightDoubleClick_ = false; ///< from the second press to its release
    VELTreeItem *flowItem_ = nullptr;
    VELTreeItem *lastFlowChild_ = nullptr;
    VELTreeItem *expertItem_ = nullptr;
    VELTreeItem *lastAddedItem_ = nullptr;
    FindDialog *findDialog_ = nullptr;             ///< a child; null until the first search
    RefusedValue refused_;                         ///< all null if there is none
    const BaseDifferences *differences_ = nullptr; ///< not owned
};

} // namespace velEditor
