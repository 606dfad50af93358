// Updates the rows and the title when the document changes.
#include "veleditor/src/Document.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/TreeBuilder.h"
#include "veleditor/src/VELTree.h"
#include "velparser/api/velparser.h"

#include <algorithm>
#include <vector>

namespace velEditor {

namespace {

const QLatin1String modifiedMark(" - Modified");

/// The child row with this path component; null if there is none.
VELTreeItem *childRow(const VELTreeItem &object, const std::string &component, bool isParameter)
{
    for (int i = 0; i < object.childCount(); ++i) {
        VELTreeItem *row = VELTreeItem::from(object.child(i));
        if (row->hasValue() == isParameter && row->component() == component) {
            return row;
        }
    }
    return nullptr;
}

} // namespace

void VELTree::followDocument()
{
    connect(document_, &Document::modifiedMarked, this, &VELTree::showMark);
    connect(document_, &Document::valueChanged, this, &VELTree::showValue);
    connect(document_, &Document::parameterAdded, this, &VELTree::showAddedParameter);
    connect(document_, &Document::objectAdded, this, &VELTree::showAddedObject);
    connect(document_, &Document::parameterRemoved, this, &VELTree::showRemovedParameter);
    connect(document_, &Document::objectRemoved, this, &VELTree::rebuildInPlace);
    connect(document_, &Document::reloaded, this, &VELTree::rebuildInPlace);
}

// --- The mark of unsaved changes ----------------------------------------------------

void VELTree::setModified()
{
    document_->setModified();
}

void VELTree::clearModified()
{
    document_->clearModified();
}

bool VELTree::isModified() const
{
    return document_->isModified();
}

void VELTree::showMark(bool modified)
{
    QString title = parentWidget()->windowTitle();
    if (title.endsWith(modifiedMark)) {
        title.chop(modifiedMark.size());
    }
    parentWidget()->setWindowTitle(modified ? title + modifiedMark : title);
}

// --- The marks of changed rows -------------------------------------------------------

void VELTree::showDifferences(const BaseDifferences *differences)
{
    if (differences_ != nullptr) {
        disconnect(differences_, nullptr, this, nullptr);
    }
    differences_ = differences;
    const auto repaint = [this] { viewport()->update(); };
    if (differences_ != nullptr) {
        connect(differences_, &BaseDifferences::differ, this, repaint);
    }
    repaint();
}

BaseDifferences::State VELTree::differenceOf(const VELTreeItem &row) const
{
    if (differences_ == nullptr || differences_->isEmpty()) {
        return BaseDifferences::State::Same;
    }
    return differences_->stateOf(row.path(), row.hasValue());
}

// --- Rows ---------------------------------------------------------------------------

void VELTree::showValue(const std::string &path, const std::string &value)
{
    if (VELTreeItem *row = rowAt(path, true)) {
        row->setValue(fromBytes(value));
    }
}

// A new parameter is shown before all others, where the user sees it; a restored one
// has its former place.
void VELTree::showAddedParameter(const std::string &path, int position)
{
    VELTreeItem *object = rowAt(parentPath(path), false);
    const bool isNew = position == Edit::atEnd;
    if (object == nullptr || (!isNew && HiddenItems().hide(path))) {
        return;
    }
    VELTreeItem *row = addParameterRow(*object, isNew ? nullptr : rowBefore(*object, position),
                                       lastComponent(path));
    row->setEditable(velparser::isParamEditable(path.c_str()) != 0);
}

VELTreeItem *VELTree::addParameterRow(VELTreeItem &object, const VELTreeItem *after,
                                      const std::string &name)
{
    const QString value =
        fromBytes(document_->data().value(childPath(object.path(), name)).value_or(""));
    return new VELTreeItem(&object, after, fromBytes(name), value, name);
}

void VELTree::showRemovedParameter(const std::string &path)
{
    if (VELTreeItem *row = rowAt(path, true)) {
        removeRow(*row);
    }
}

void VELTree::removeRow(VELTreeItem &row)
{
    forget(row);
    delete &row;
    clearSelection(); // the view selects a neighbour that the user did not choose
}

/// The row of a parameter or object; null if none is shown. Tries the selected row
/// first, because most changes concern it.
VELTreeItem *VELTree::rowAt(const std::string &path, bool isParameter) const
{
    VELTreeItem *selected = selectedItem();
    if (selected != nullptr && selected->hasValue() == isParameter && selected->path() == path) {
        return selected;
    }
    VELTreeItem *row = firstItem();
    for (std::size_t start = 1; start < path.size() && row != nullptr;) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        row = childRow(*row, path.substr(start, end - start), isParameter && end == path.size());
        start = end + 1;
    }
    return row;
}

/// The row of the last shown child that is stored before a place; null if there is
/// none.
VELTreeItem *VELTree::rowBefore(const VELTreeItem &object, int position) const
{
    std::vector<std::string> before = document_->data().components(object.path());
    before.resize(std::min(before.size(), static_cast<std::size_t>(position)));
    for (auto component = before.rbegin(); component != before.rend(); ++component) {
        for (const bool isParameter : {true, false}) {
            if (VELTreeItem *row = childRow(object, *component, isParameter)) {
                return row;
            }
        }
    }
    return nullptr;
}

} // namespace velEditor
