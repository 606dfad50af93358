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

    /// The beginning of a text, as much as any screen shows: a line of a command
    /// file may hold millions of characters, and all given would be laid out.
    [[nodiscard]] QString displayText(const QVariant &value, const QLocale &locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

} // namespace velEditor
