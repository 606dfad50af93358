// Paints the rows of the command tree in the colours that tell the user what
// can be changed: orange for expert parameters, green for the values of all
// others.
#pragma once

#include <QStyledItemDelegate>

namespace velEditor {

class RowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The first 1,000 characters of a text: a line of a command file may hold
    /// millions, and all that are given would be laid out.
    [[nodiscard]] QString displayText(const QVariant &value, const QLocale &locale) const override;

    /// Where the vertical scroll bar covers the end of a column, a text ends
    /// before it.
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

} // namespace velEditor
