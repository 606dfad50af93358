// Paints the rows of the command tree in colours that show what can be changed:
// orange for expert parameters, green for the values of all others. Rows that differ
// from the disk have a bar before them.
#pragma once

#include <QStyledItemDelegate>

namespace velEditor {

class RowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The first 1,000 characters of a text. A line of a command file may have
    /// millions, and the view would lay out all of them.
    [[nodiscard]] QString displayText(const QVariant &value, const QLocale &locale) const override;

    /// Paints a row. If the vertical scroll bar covers the end of a column, the text
    /// ends before it. A row that differs from the disk gets its mark.
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

} // namespace velEditor
