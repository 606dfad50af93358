// The command tree: the data of a document as two columns of names and values,
// and the operations with which the user changes it.
//
// The tree is built whole from the database and again whenever its structure
// has changed; a rebuild invalidates every pointer to a row. The operations
// change the document, and the rows follow its signals. The document's mark of
// unsaved changes shows in the title of the tree's parent widget.
#pragma once

#include "veleditor/src/VELTreeItem.h"

#include <QPoint>
#include <QTreeWidget>

#include <memory>
#include <string>

namespace velEditor {

class Document;
struct Edit;
class EditParamDialog;
class ErrorDialog;
class FindDialog;

class VELTree : public QTreeWidget
{
    Q_OBJECT

public:
    /// Builds the tree at once; throws as `buildTree` does. The document (not
    /// owned) outlives the tree; without one the tree has its own, of no file.
    VELTree(QWidget *parent, const QString &name, Document *document = nullptr);
    ~VELTree() override;

    // --- Unsaved changes of the document --------------------------------------

    void setModified();
    void clearModified();
    [[nodiscard]] bool isModified() const;

    // --- Rows (not owned; null where there is none) -------------------------

    /// The top-level flow object, the last row that was built directly under
    /// it, and its section of expert parameters.
    [[nodiscard]] VELTreeItem *flowItem() const { return flowItem_; }
    [[nodiscard]] VELTreeItem *lastFlowChild() const { return lastFlowChild_; }
    [[nodiscard]] VELTreeItem *expertItem() const { return expertItem_; }

    /// The row that `addParameter` made last.
    [[nodiscard]] VELTreeItem *lastAddedItem() const { return lastAddedItem_; }

    /// What the user has selected, which may differ from where the keyboard is.
    [[nodiscard]] VELTreeItem *selectedItem() const;

    /// The topmost row.
    [[nodiscard]] VELTreeItem *firstItem() const;

    /// Opens a row and all above it, brings it into view and selects it.
    void showMatch(VELTreeItem &match);

    /// Opens all above the row that an edit has changed, brings it into view and
    /// selects it; where no such row is shown, the one of the object around it.
    void showChange(const Edit &edit);

    // --- Whole tree and single rows, by key ----------------------------------

    /// Opens every row, or closes all but the topmost; the selected row, or the
    /// one above it that is still shown, stays in view and selected.
    void openAll();
    void closeAll();

    /// Puts the database path, or the value, of the selected row on the
    /// clipboard; nothing where there is none.
    void copyPath() const;
    void copyValue() const;

    /// Shows what the rules say of the selected row, beside it.
    void explainRow();

    /// Where a menu or an explanation of the selected row belongs: below it, in
    /// global coordinates; the top of the tree where no row is selected.
    [[nodiscard]] QPoint placeBesideRow() const;

public slots:
    /// Throws `error` when the database cannot be walked; see TreeBuilder.
    void buildTree();

    /// Asks for a new value and stores it. Where the value does not validate, its
    /// errors are shown and the former value is put back; the mark of unsaved
    /// changes stays. When the user closes the errors, the dialog comes back with
    /// what was typed.
    void editParam(velEditor::VELTreeItem *item);
    void editQListItem(QTreeWidgetItem *item);

    /// Adds the section of expert parameters to the flow object, once. Without
    /// a flow object one is made and the tree is built anew, which throws as
    /// `buildTree` does.
    void addExpertParamObj();

    /// Asks for a name and a value and adds the parameter to the selected
    /// object, or to the object that holds the selected parameter.
    void addParameter();
    void editCurrParameter();

    /// Deletes the selected parameter if the user agrees.
    void deleteParam();

    /// Sorts by a column; below 0 the order of the database is kept from then on.
    void setSorting(int column, bool ascending);
    void setSorting(int column);

    /// Shows the dialog for the text to find; the search starts behind the
    /// selected row.
    void doFind();

    /// The next step of the search, without the dialog if there has been one.
    void doFindNext();

    /// Opens the row at a global point if it was closed and closes it if it was
    /// open, and all below it likewise.
    void openOrClose(QTreeWidgetItem *item, QPoint point, int column);

signals:
    /// A menu was asked for by key; the right button has other work.
    void menuRequested(QPoint globalPoint);

    /// The right button was released over a row, or over none.
    void rightButtonClicked(QTreeWidgetItem *item, QPoint globalPoint, int column);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void updateGeometries() override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    /// Whether the view would hold all columns if it had no vertical scroll bar.
    [[nodiscard]] bool columnsFit() const;
    void keepFromMovingSideways();

    /// A value that did not validate, until the user has closed its errors.
    struct RefusedValue
    {
        VELTreeItem *item = nullptr;
        const ErrorDialog *errors = nullptr;     ///< only compared
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

    // --- What follows the document ------------------------------------------
    // Rows that are not shown stay so.

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

    Document *document_;              ///< a child where it is the tree's own
    bool isRightDoubleClick_ = false; ///< from its second press to its release
    VELTreeItem *flowItem_ = nullptr;
    VELTreeItem *lastFlowChild_ = nullptr;
    VELTreeItem *expertItem_ = nullptr;
    VELTreeItem *lastAddedItem_ = nullptr;
    FindDialog *findDialog_ = nullptr; ///< a child; null until the first search
    RefusedValue refused_;             ///< all null where there is none
};

} // namespace velEditor
