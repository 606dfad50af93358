// Colours and lengths of the texts in the rows, and their marks.
#include "veleditor/src/RowDelegate.h"

#include "veleditor/src/Text.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/VELTreeItem.h"

#include <QColor>
#include <QPainter>
#include <QScrollBar>

#include <optional>

namespace velEditor {

namespace {

constexpr QColor expertColour(255, 140, 0);
constexpr QColor valueColour(0, 200, 0);
constexpr QColor highlightColour(0, 0, 255);

/// The bar at a row that differs from the disk, in pixels.
constexpr int markWidth = 4;
constexpr int narrowMarkWidth = 2;
constexpr int markGap = 1;

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

/// Paints a bar next to a row: before it, where the branches end, but within the
/// topmost row, which has nothing before it. It has the colour of the text.
void paintMark(QPainter &painter, const QStyleOptionViewItem &option, bool hasRoomBefore)
{
    QRect bar = option.rect.adjusted(0, markGap, 0, -markGap);
    bar.setWidth(hasRoomBefore ? markWidth : narrowMarkWidth);
    if (hasRoomBefore) {
        bar.translate(-markWidth - markGap, 0);
    }
    const bool isSelected = (option.state & QStyle::State_Selected) != 0 && !hasRoomBefore;
    painter.fillRect(bar, isSelected ? Qt::white : option.palette.color(QPalette::Text));
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
    const VELTreeItem *item = tree != nullptr && index.column() == VELTreeItem::Name
                                  ? VELTreeItem::from(tree->itemFromIndex(index))
                                  : nullptr;
    if (item != nullptr && tree->differenceOf(*item) != BaseDifferences::State::Same) {
        paintMark(*painter, option, item->parent() != nullptr);
    }
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
