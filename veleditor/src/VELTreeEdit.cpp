// The operations of the tree that change or delete what is there.
#include "veleditor/src/Boxes.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/StoredValue.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"
#include "velparser/api/velparser.h"

namespace velEditor {

void VELTree::editQListItem(QTreeWidgetItem *item)
{
    if (VELTreeItem *row = VELTreeItem::from(item))
        editParam(row);
}

void VELTree::editCurrParameter()
{
    if (VELTreeItem *item = selectedItem())
        editParam(item);
    else
        warn(this, tr("Edit Parameter"),
             tr("Please select the parameter you wish to edit and try again.\n"));
}

void VELTree::editParam(VELTreeItem *item)
{
    if (item == nullptr)
        return;
    if (!item->isEditable()) {
        if (item->hasValue())
            refuseEdit(item->label());
        return;
    }
    EditParamDialog dialog(this, tr("Edit Parameter"), *item);
    if (run(dialog) == QDialog::Accepted)
        storeValue(*item, dialog.value());
}

void VELTree::refuseEdit(const QString &name)
{
    warn(this, tr("Cannot edit ") + name,
         tr("Only orange expert parameters and parameters\n"
            "whose values are shown in green can be edited."));
}

void VELTree::storeValue(VELTreeItem &item, const std::string &newValue)
{
    const std::string path = item.path();
    const std::string oldValue = storedValue(path).value_or("");
    const QString oldText = item.value();

    item.setValue(fromBytes(newValue));
    const char *refused = velparser::setStringValue(path.c_str(), newValue.c_str());
    setModified();
    if (refused != nullptr) {
        item.setValue(oldText);
        warn(this, tr("Edit Parameter"), fromBytes(refused));
        return;
    }
    if (const char *errors = velparser::validateParameter(path.c_str())) {
        showErrors(errors);
        item.setValue(oldText);
        static_cast<void>(velparser::setStringValue(path.c_str(), oldValue.c_str()));
    }
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
    if (ask(this, box) != 0)
        return;
    static_cast<void>(velparser::deleteParam(item->path().c_str()));
    forget(*item);
    delete item;
    setModified();
}

/// Lets go of a row that is about to be deleted.
void VELTree::forget(const VELTreeItem &item)
{
    if (lastAddedItem_ == &item)
        lastAddedItem_ = nullptr;
    if (lastFlowChild_ == &item)
        lastFlowChild_ = VELTreeItem::from(
            item.parent()->child(item.parent()->indexOfChild(lastFlowChild_) - 1));
    if (findDialog_ != nullptr && findDialog_->nextItem() == &item)
        findDialog_->setNextItem(nullptr);
}

void VELTree::showErrors(const char *messages)
{
    auto *dialog = new ErrorDialog(this, QStringLiteral("Errors"), messages, false);
    dialog->show();
}

} // namespace velEditor
    clearSelection(); // the view selects a neighbour, which nobody chose
