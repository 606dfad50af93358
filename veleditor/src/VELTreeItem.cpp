#include "veleditor/src/VELTreeItem.h"

#include "veleditor/src/Text.h"

#include <QCoreApplication>
#include <QTextDocument>

#include <utility>
#include <vector>

namespace velEditor {

namespace {

// Nearly always a row goes behind the last one, which needs no search.
int positionBehind(const QTreeWidgetItem &parent, const QTreeWidgetItem *after)
{
    if (after == nullptr)
        return 0;
    const int count = parent.childCount();
    if (count > 0 && parent.child(count - 1) == after)
        return count;
    return parent.indexOfChild(const_cast<QTreeWidgetItem *>(after)) + 1;
}

} // namespace

VELTreeItem::VELTreeItem(VELTreeItem *parent, const QTreeWidgetItem *after, QString label,
                         std::optional<QString> value, std::string component)
    : QTreeWidgetItem(ItemType), component_(std::move(component)), label_(std::move(label)),
      hasValue_(value.has_value()), inExpertSection_(parent != nullptr && parent->inExpertSection_)
{
    if (value)
        value_ = std::move(*value);
    if (parent != nullptr)
        parent->insertChild(positionBehind(*parent, after), this);
}

VELTreeItem *VELTreeItem::from(QTreeWidgetItem *item)
{
    return item != nullptr && item->type() == ItemType ? static_cast<VELTreeItem *>(item) : nullptr;
}

std::string VELTreeItem::path() const
{
    std::vector<const VELTreeItem *> rows;
    for (const VELTreeItem *row = this; row->parent() != nullptr; row = from(row->parent()))
        rows.push_back(row);
    if (rows.empty())
        return "/";

    std::string path;
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        path += '/';
        path += (*row)->component_;
    }
    return path;
}

std::string VELTreeItem::labelBytes() const
{
    return toBytesInPlaceOf(label_, component_);
}

void VELTreeItem::setValue(const QString &value)
{
    value_ = value;
    emitDataChanged();
}

QString VELTreeItem::state() const
{
    if (!hasValue_)
        return QString();
    if (!editable_)
        return QCoreApplication::translate("velEditor::VELTreeItem", "cannot be changed");
    return inExpertSection_
               ? QCoreApplication::translate("velEditor::VELTreeItem",
                                             "expert parameter, can be changed")
               : QCoreApplication::translate("velEditor::VELTreeItem", "can be changed");
}

// The whole text, which the column may have cut, and the state. The tool tip
// would take text that looks like markup for that.
QString VELTreeItem::fullText(int column) const
{
    constexpr qsizetype mostCharacters = 2000;
    QString text = (column == Name ? label_ : value_).left(mostCharacters);
    const QString said = state();
    if (!said.isEmpty())
        text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + u'(' + said + u')';
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

QVariant VELTreeItem::data(int column, int role) const
{
    if (role == Qt::DisplayRole || role == Qt::EditRole) {
        if (column == Name)
            return label_;
        return hasValue_ ? QVariant(value_) : QVariant();
    }
    if (role == Qt::ToolTipRole)
        return fullText(column);
    if (role == Qt::AccessibleDescriptionRole)
        return state();
    return QTreeWidgetItem::data(column, role);
}

void VELTreeItem::setData(int column, int role, const QVariant &value)
{
    if (role != Qt::DisplayRole && role != Qt::EditRole) {
        QTreeWidgetItem::setData(column, role, value);
    } else if (column == Name) {
        label_ = value.toString();
        emitDataChanged();
    } else {
        setValue(value.toString());
    }
}

} // namespace velEditor
