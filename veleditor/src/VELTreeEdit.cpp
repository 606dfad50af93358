// The operations of the tree that change command data.
#include "veleditor/src/Boxes.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"
#include "velparser/api/velparser.h"

#include <optional>

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
            warn(this, tr("Cannot edit ") + item->label(),
                 tr("Only orange expert parameters and parameters\n"
                    "whose values are shown in green can be edited."));
        return;
    }
    EditParamDialog dialog(this, tr("Edit Parameter"), *item);
    if (run(dialog) == QDialog::Accepted)
        storeValue(*item, dialog.value());
}

void VELTree::storeValue(VELTreeItem &item, const std::string &newValue)
{
    const std::string path = item.path();
    std::optional<std::string> oldValue;
    static_cast<void>(velparser::getStringValue(path.c_str(), &oldValue));
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
        static_cast<void>(velparser::setStringValue(path.c_str(), oldValue.value_or("").c_str()));
    }
}

void VELTree::showErrors(const char *messages)
{
    auto *dialog = new ErrorDialog(this, QStringLiteral("Errors"), messages, false);
    dialog->show();
}

} // namespace velEditor
