// The tree's operations that add to the command data.
#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"
#include "velparser/api/velparser.h"

#include <vector>

namespace velEditor {

namespace {

const char expertSection[] = "EXPERT PARAMETERS";
const char usualFlowObject[] = "/FLOW:Analysis";

/// The edit that adds the section of expert parameters to the flow object. If there is
/// no flow object, the edit adds one with the section.
Edit addingExpertSection(const VELTreeItem *flowItem)
{
    if (flowItem != nullptr) {
        return addingObject(childPath(flowItem->path(), expertSection),
                            "EXPERT PARAMETERS :\nEND\n");
    }
    return addingObject(usualFlowObject, "FLOW : Analysis\nEXPERT PARAMETERS :\nEND\nEND\n");
}

/// The child row of a parameter; null if there is none.
VELTreeItem *parameterRow(const VELTreeItem &object, const std::string &name)
{
    for (int i = 0; i < object.childCount(); ++i) {
        VELTreeItem *row = VELTreeItem::from(object.child(i));
        if (row->hasValue() && row->component() == name && row->label() == fromBytes(name)) {
            return row;
        }
    }
    return nullptr;
}

/// The labels of an object and of its ancestors below the root; they open the blocks in
/// command text.
std::vector<std::string> openingLabels(VELTreeItem &object)
{
    std::vector<std::string> labels;
    for (VELTreeItem *row = &object; row->parent() != nullptr;
         row = VELTreeItem::from(row->parent())) {
        labels.insert(labels.begin(), row->labelBytes());
    }
    return labels;
}

} // namespace

void VELTree::addExpertParamObj()
{
    if (expertItem_ != nullptr) {
        flowItem_->setExpanded(true);
        scrollToItem(expertItem_);
        inform(this, tr("Add Expert Parameter Section"),
               tr("An expert parameter section already exists.\nMultiple expert parameter "
                  "sections cannot be created. \nUse \"Edit->Add Expert Parameter\" to add a "
                  "parameter to this section."));
        return;
    }
    // Kept: what the database says is not looked at, and a flow object of the
    // usual name marks nothing.
    if (flowItem_ == nullptr) {
        static_cast<void>(document_->apply(addingExpertSection(nullptr), Document::Marking::None));
        if (flowItem_ == nullptr) {
            buildTree();
        }
        return;
    }
    static_cast<void>(document_->apply(addingExpertSection(flowItem_)));
    if (expertItem_ == nullptr) {
        showExpertSection();
    }
    viewport()->update();
}

void VELTree::showAddedObject(const std::string &path, int position)
{
    const bool isNew = position == Edit::atEnd;
    const bool isSection =
        flowItem_ != nullptr && path == childPath(flowItem_->path(), expertSection);
    const bool isEmpty = document_->data().components(path).empty();
    if (isNew && isSection && isEmpty && expertItem_ == nullptr) {
        showExpertSection();
    } else if (isNew && !isSection) {
        buildTree();
    } else {
        rebuildInPlace();
    }
}

void VELTree::showExpertSection()
{
    expertItem_ = new VELTreeItem(flowItem_, lastFlowChild_, fromBytes(labelOf(expertSection)),
                                  std::nullopt, expertSection);
    expertItem_->setInExpertSection(true);
    flowItem_->setExpanded(true);
    scrollToItem(expertItem_);
}

void VELTree::addParameter()
{
    VELTreeItem *target = selectedItem();
    if (target == nullptr) {
        warn(this, tr("Add Parameter"),
             tr("Error:  You must select the object you wish to add parameters to.\nPlease select "
                "an object and try again."));
        return;
    }
    if (target->hasValue()) {
        target = VELTreeItem::from(target->parent());
    }

    AddParamDialog dialog(this, tr("Add Parameter"), target->path(), document_->encoding());
    if (run(dialog) != QDialog::Accepted) {
        return;
    }
    const std::string name = dialog.storedName();
    const std::string path = childPath(target->path(), name);
    if (velparser::isParamEditable(path.c_str()) == 0) {
        refuseEdit(fromBytes(name));
        return;
    }
    const std::string objectPath = target->path();
    const bool isThere = document_->data().has(objectPath);
    VELTreeItem *former = parameterRow(*target, name);
    if (const Message failure =
            document_->apply(addingParameter(path, dialog.value(), openingLabels(*target)))) {
        warn(this, tr("Add Parameter"),
             tr("Error encountered while processing new parameter.\n") +
                 tr("Error message was:\n") + fromBytes(*failure) +
                 tr("\nParameter was not created."));
        return;
    }
    if (!isThere) { // it is there now, and all rows were made again
        target = rowAt(objectPath, false);
        former = nullptr;
    }
    if (target != nullptr) {
        showNewParameter(*target, name, former);
    }
    if (const Message errors = document_->validateObject(objectPath)) {
        showErrors(*errors);
    }
    viewport()->update();
}

// If the object already had the parameter, the new row replaces the old one.
void VELTree::showNewParameter(VELTreeItem &target, const std::string &name, VELTreeItem *former)
{
    const bool wasSelected = former != nullptr && former->isSelected();
    if (former != nullptr) {
        forget(*former);
        delete former;
    }
    VELTreeItem *row = parameterRow(target, name);
    if (row == nullptr) {
        row = addParameterRow(target, nullptr, name);
    }
    if (wasSelected) {
        setCurrentItem(row);
    }
    lastAddedItem_ = row;
    target.setExpanded(true);
    scrollToItem(row);
    row->setEditable(true);
}

} // namespace velEditor
