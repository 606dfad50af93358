// The operations of the tree that add to the command data.
#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/StoredValue.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/ValueText.h"
#include "velparser/api/velparser.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace velEditor {

namespace {

const char expertSection[] = "EXPERT PARAMETERS";

/// The line that opens the flow object: the first component of its path.
std::string flowObjectLine(const VELTreeItem *flowItem)
{
    if (flowItem == nullptr)
        return "FLOW:Analysis";
    const std::string path = flowItem->path();
    std::string line = path.substr(1, path.find('/', 1) - 1);
    if (line.find(':') == std::string::npos)
        line += ':';
    return line;
}

const char *loadLines(const std::vector<std::string> &lines)
{
    std::vector<const char *> texts;
    texts.reserve(lines.size());
    for (const std::string &line : lines)
        texts.push_back(line.c_str());
    return velparser::loadVELData(texts.data(), static_cast<std::int32_t>(texts.size()));
}

/// Command text that sets one parameter of the object at a row: what opens
/// the row and all above it below the root, the parameter, and as many ends.
std::vector<std::string> parameterFragment(VELTreeItem &target, const std::string &name,
                                           const std::string &value)
{
    std::vector<std::string> lines;
    for (VELTreeItem *row = &target; row->parent() != nullptr;
         row = VELTreeItem::from(row->parent()))
        lines.insert(lines.begin(), row->labelBytes());
    const std::size_t opened = lines.size();
    lines.push_back(parameterLine(name, value));
    lines.insert(lines.end(), opened, "END");
    return lines;
}

std::string childPath(const VELTreeItem &object, const std::string &name)
{
    return (object.parent() != nullptr ? object.path() : std::string()) + '/' + name;
}

/// The child row of a parameter; null where there is none.
VELTreeItem *parameterRow(const VELTreeItem &object, const QString &name)
{
    for (int i = 0; i < object.childCount(); ++i) {
        VELTreeItem *row = VELTreeItem::from(object.child(i));
        if (row->hasValue() && row->label() == name)
            return row;
    }
    return nullptr;
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
    static_cast<void>(loadLines(
        {flowObjectLine(flowItem_), std::string("  ") + expertSection + ':', "  END", "END"}));
    if (flowItem_ == nullptr) {
        buildTree();
        return;
    }
    expertItem_ = new VELTreeItem(flowItem_, lastFlowChild_,
                                  QString::fromLatin1(expertSection) + QLatin1String(" :"),
                                  std::nullopt, expertSection);
    expertItem_->setInExpertSection(true);
    flowItem_->setExpanded(true);
    scrollToItem(expertItem_);
    setModified();
    viewport()->update();
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
    if (target->hasValue())
        target = VELTreeItem::from(target->parent());

    AddParamDialog dialog(this, tr("Add Parameter"), target->path(), encoding_);
    if (run(dialog) != QDialog::Accepted)
        return;
    const std::string name = dialog.storedName();
    if (velparser::isParamEditable(childPath(*target, name).c_str()) == 0) {
        refuseEdit(fromBytes(name));
        return;
    }
    const char *failure = loadLines(parameterFragment(*target, dialog.paramName(), dialog.value()));
    setModified();
    if (failure != nullptr) {
        warn(this, tr("Add Parameter"),
             tr("Error encountered while processing new parameter.\n") +
                 tr("Error message was:\n") + fromBytes(failure) +
                 tr("\nParameter was not created."));
        return;
    }
    showNewParameter(*target, name);
    if (const char *errors = velparser::validateVELObjectH(target->path().c_str()))
        showErrors(errors);
    viewport()->update();
}

// Where the object already had the parameter, the new row replaces its row.
void VELTree::showNewParameter(VELTreeItem &target, const std::string &name)
{
    VELTreeItem *former = parameterRow(target, fromBytes(name));
    const bool wasSelected = former != nullptr && former->isSelected();
    if (former != nullptr) {
        forget(*former);
        delete former;
    }
    const QString value = fromBytes(storedValue(childPath(target, name)).value_or(""));
    auto *row = new VELTreeItem(&target, nullptr, fromBytes(name), value, name);
    if (wasSelected)
        setCurrentItem(row);
    lastAddedItem_ = row;
    target.setExpanded(true);
    scrollToItem(row);
    row->setEditable(true);
}

} // namespace velEditor
