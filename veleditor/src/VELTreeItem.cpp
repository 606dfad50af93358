// A row: its label and path from its component, and its texts.
#include "veleditor/src/VELTreeItem.h"

#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/RowHelp.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"

#include <QCoreApplication>

#include <utility>
#include <vector>

namespace velEditor {

namespace {

// A row is nearly always added after the last one, which needs no search.
int positionAfter(const QTreeWidgetItem &parent, const QTreeWidgetItem *after)
{
    if (after == nullptr) {
        return 0;
    }
    const int count = parent.childCount();
    if (count > 0 && parent.child(count - 1) == after) {
        return count;
    }
    return parent.indexOfChild(const_cast<QTreeWidgetItem *>(after)) + 1;
}

} // namespace

VELTreeItem::VELTreeItem(VELTreeItem *parent, const QTreeWidgetItem *after, const QString &label,
                         std::optional<QString> value, std::string component)
    : QTreeWidgetItem(ItemType), component_(std::move(component)), hasValue_(value.has_value()),
      inExpertSection_(parent != nullptr && parent->inExpertSection_)
{
    setLabel(label);
    if (value) {
        value_ = std::move(*value);
    }
    if (parent != nullptr) {
        parent->insertChild(positionAfter(*parent, after), this);
    }
}

VELTreeItem *VELTreeItem::from(QTreeWidgetItem *item)
{
    return item != nullptr && item->type() == ItemType ? static_cast<VELTreeItem *>(item) : nullptr;
}

std::string VELTreeItem::path() const
{
    std::vector<const VELTreeItem *> rows;
    for (const VELTreeItem *row = this; row->parent() != nullptr; row = from(row->parent())) {
        rows.push_back(row);
    }
    if (rows.empty()) {
        return "/";
    }

    std::string path;
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        path += '/';
        path += (*row)->component_;
    }
    return path;
}

std::string VELTreeItem::formedLabel(LabelForm form) const
{
    return form == LabelForm::Object ? labelOf(component_) : component_;
}

void VELTreeItem::setLabel(const QString &label)
{
    ownLabel_ = QString();
    for (const LabelForm form : {LabelForm::Parameter, LabelForm::Object}) {
        labelForm_ = form;
        if (fromBytes(formedLabel(form)) == label) {
            return;
        }
    }
    labelForm_ = LabelForm::Own;
    ownLabel_ = label;
}

QString VELTreeItem::label() const
{
    return labelForm_ == LabelForm::Own ? ownLabel_ : fromBytes(formedLabel(labelForm_));
}

std::string VELTreeItem::labelBytes() const
{
    return labelForm_ == LabelForm::Own ? toBytesInPlaceOf(ownLabel_, component_)
                                        : formedLabel(labelForm_);
}

void VELTreeItem::setValue(const QString &value)
{
    value_ = value;
    emitDataChanged();
}

QString VELTreeItem::state() const
{
    QStringList states{permission(), difference()};
    states.removeAll(QString());
    return states.join(QLatin1String("; "));
}

QString VELTreeItem::permission() const
{
    if (!hasValue_) {
        return QString();
    }
    if (!editable_) {
        return QCoreApplication::translate("velEditor::VELTreeItem", "cannot be changed");
    }
    return inExpertSection_
               ? QCoreApplication::translate("velEditor::VELTreeItem",
                                             "expert parameter, can be changed")
               : QCoreApplication::translate("velEditor::VELTreeItem", "can be changed");
}

QString VELTreeItem::difference() const
{
    const auto *tree = qobject_cast<const VELTree *>(treeWidget());
    switch (tree != nullptr ? tree->differenceOf(*this) : BaseDifferences::State::Same) {
    case BaseDifferences::State::Same:
        break;
    case BaseDifferences::State::Changed:
        return QCoreApplication::translate("velEditor::VELTreeItem", "changed, not saved yet");
    case BaseDifferences::State::Added:
        return QCoreApplication::translate("velEditor::VELTreeItem", "added, not saved yet");
    case BaseDifferences::State::Lost:
        return QCoreApplication::translate("velEditor::VELTreeItem",
                                           "something in it was removed, not saved yet");
    }
    return QString();
}

QVariant VELTreeItem::data(int column, int role) const
{
    if (role == Qt::DisplayRole || role == Qt::EditRole) {
        if (column == Name) {
            return label();
        }
        return hasValue_ ? QVariant(value_) : QVariant();
    }
    if (role == Qt::ToolTipRole) {
        return rowToolTip(*this, column);
    }
    if (role == Qt::WhatsThisRole) {
        return rowWhatsThis(*this);
    }
    if (role == Qt::AccessibleDescriptionRole) {
        return state();
    }
    return QTreeWidgetItem::data(column, role);
}

void VELTreeItem::setData(int column, int role, const QVariant &value)
{
    if (role != Qt::DisplayRole && role != Qt::EditRole) {
        QTreeWidgetItem::setData(column, role, value);
    } else if (column == Name) {
        setLabel(value.toString());
        emitDataChanged();
    } else {
        setValue(value.toString());
    }
}

} // namespace velEditor
