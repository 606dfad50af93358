// Colours and lengths of the texts in the rows.
#include "veleditor/src/RowDelegate.h"

#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/VELTreeItem.h"

#include <QColor>
#include <QScrollBar>

#include <optional>

namespace velEditor {

namespace {

constexpr QColor expertColour(255, 140, 0);
constexpr QColor valueColour(0, 200, 0);
constexpr QColor highlightColour(0, 0, 255);

/// The colour of a row's text; none for the normal colour.
std::optional<QColor> textColour(const VELTreeItem &item, int column)
{
    if (!item.isEditable()) {
        return std::nullopt;
    }
    if (item.isInExpertSection()) {
        return expertColour;
    }
    if (column == VELTreeItem::Value) {
        return valueColour;
    }
    return std::nullopt;
}

} // namespace

QString RowDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    return QStyledItemDelegate::displayText(shortened(value.toString()), locale);
}

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                        const QModelIndex &index) const
{
    QStyleOptionViewItem visible = option;
    const auto *tree = qobject_cast<const VELTree *>(option.widget);
    if (tree != nullptr && tree->horizontalScrollBar()->maximum() == 0) {
        visible.rect.setRight(qMin(option.rect.right(), tree->viewport()->rect().right()));
    }
    QStyledItemDelegate::paint(painter, visible, index);
}

void RowDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->palette.setColor(QPalette::Highlight, highlightColour);
    option->palette.setColor(QPalette::HighlightedText, Qt::white); // in every palette

    const auto *tree = qobject_cast<const VELTree *>(option->widget);
    if (tree == nullptr) {
        return;
    }
    const VELTreeItem *item = VELTreeItem::from(tree->itemFromIndex(index));
    if (item == nullptr) {
        return;
    }
    if (const auto colour = textColour(*item, index.column())) {
        option->palette.setColor(QPalette::Text, *colour);
    }
}

} // namespace velEditor
