// The tree's operations that change or delete parameters.
#include "veleditor/src/Boxes.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"

#include <QApplication>

#include <utility>

namespace velEditor {

void VELTree::editQListItem(QTreeWidgetItem *item)
{
    if (VELTreeItem *row = VELTreeItem::from(item)) {
        editParam(row);
    }
}

void VELTree::editCurrParameter()
{
    if (VELTreeItem *item = selectedItem()) {
        editParam(item);
    } else {
        warn(this, tr("Edit Parameter"),
             tr("Please select the parameter you wish to edit and try again.\n"));
    }
}

void VELTree::editParam(VELTreeItem *item)
{
    if (item == nullptr) {
        return;
    }
    if (!item->isEditable()) {
        if (item->hasValue()) {
            refuseEdit(item->label());
        }
        return;
    }
    RefusedValue refused = std::exchange(refused_, {});
    if (refused.item == item) {
        askForValue(*item, std::move(refused.dialog));
    } else {
        askForValue(*item, std::make_unique<EditParamDialog>(this, tr("Edit Parameter"), *item,
                                                             document_->encoding()));
    }
}

void VELTree::refuseEdit(const QString &name)
{
    warn(this, tr("Cannot edit ") + name,
         tr("Only orange expert parameters and parameters\n"
            "whose values are shown in green can be edited."));
}

// If the database refuses the value, the dialog opens again at once. If the value is
// not valid, it opens again when the user closes the errors, which do not block the
// window.
void VELTree::askForValue(VELTreeItem &item, std::unique_ptr<EditParamDialog> dialog)
{
    while (run(*dialog) == QDialog::Accepted) {
        const QString former = item.value();
        if (!storeValue(item, dialog->value())) {
            continue;
        }
        if (ErrorDialog *errors = validateValue(item, former)) {
            refused_ = {&item, errors, std::move(dialog)};
            connect(
                errors, &ErrorDialog::finished, this, [this, errors] { askAgain(errors); },
                Qt::QueuedConnection);
        }
        return;
    }
}

void VELTree::askAgain(const ErrorDialog *errors)
{
    if (refused_.errors != errors) {
        return;
    }
    if (window()->isVisible() && QApplication::activeModalWidget() == nullptr) {
        editParam(refused_.item);
    } else {
        refused_ = {};
    }
}

bool VELTree::storeValue(VELTreeItem &item, const std::string &value)
{
    const Message refused = document_->apply(settingValue(item.path(), value));
    if (refused) {
        warn(this, tr("Edit Parameter"), fromBytes(*refused));
    }
    return !refused;
}

ErrorDialog *VELTree::validateValue(VELTreeItem &item, const QString &former)
{
    const Message messages = document_->validateParameter(item.path());
    if (!messages) {
        return nullptr;
    }
    ErrorDialog *errors = showErrors(*messages);
    if (document_->rollBack()) {
        item.setValue(former);
    }
    return errors;
}

void VELTree::deleteParam()
{
    VELTreeItem *item = selectedItem();
    if (item == nullptr || !item->hasValue() || !item->isEditable()) {
        warn(this, tr("Deleting Parameter"),
             tr("Only orange expert parameters and parameters\nwhose values are shown in green can "
                "be deleted.\n"));
        return;
    }
    MessageBox box;
    box.icon = QMessageBox::Information;
    box.title = tr("Deleting Parameter");
    box.text = tr("You are about to delete the parameter\n") + item->label() + tr(" = ") +
               item->value() + tr("\nThis cannot be undone.\nDo you really want to do this?");
    box.buttons = QStringList{tr("&Delete The Parameter"), tr("&Cancel")};
    if (ask(this, box) != 0) {
        return;
    }
    if (document_->apply(deletingParameter(item->path()))) {
        removeRow(*item); // kept: what the database says is not looked at
    }
}

/// Drops all pointers to a row before it is deleted.
void VELTree::forget(const VELTreeItem &item)
{
    if (lastAddedItem_ == &item) {
        lastAddedItem_ = nullptr;
    }
    if (lastFlowChild_ == &item) {
        lastFlowChild_ = VELTreeItem::from(
            item.parent()->child(item.parent()->indexOfChild(lastFlowChild_) - 1));
    }
    if (findDialog_ != nullptr && findDialog_->nextItem() == &item) {
        findDialog_->setNextItem(nullptr);
    }
    if (refused_.item == &item) {
        refused_ = {};
    }
}

ErrorDialog *VELTree::showErrors(const std::string &messages)
{
    auto *dialog = new ErrorDialog(this, QStringLiteral("Errors"), messages, false);
    dialog->show();
    return dialog;
}

} // namespace velEditor
