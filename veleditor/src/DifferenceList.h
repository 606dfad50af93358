// A list of the differences between two versions of command data: what happened, the
// path, the value before and the value after, a row for each.
//
//     auto *list = new DifferenceList("Differences", tr("Differences"), dialog);
//     list->setValueHeadings(tr("On Disk"), tr("In This Window"));
//     list->setAction(tr("Revert"));    // only where each row has a button
//     list->setDifferences(veltext::diff(before, after));
//
// The rows keep the order that they are given in. Ctrl+C copies the selected rows, a
// line for each with tabs between the cells; long values are shown shortened, but
// copied whole. With an action, each row has a button, which Return and Space press in
// the current row.
#pragma once

#include "veltext/commandText.h"

#include <QString>
#include <QTreeView>

#include <string>
#include <vector>

namespace velEditor {

class DifferenceModel;

class DifferenceList : public QTreeView
{
    Q_OBJECT

public:
    /// The columns; the last one is shown only with an action.
    enum Column { Kind, Path, Before, After, Action };

    /// Has no rows. `name` is the name of the object; `accessibleName` says to a screen
    /// reader what is listed.
    DifferenceList(const char *name, const QString &accessibleName, QWidget *parent);

    /// The headings of the two columns with values, at first "Before" and "After".
    void setValueHeadings(const QString &before, const QString &after);

    /// The text on the button of each row.
    void setAction(const QString &text);

    /// What is shown where there are no rows, at first nothing.
    void setEmptyText(const QString &text);

    /// Shows these rows. What is selected and where the list is scrolled to is kept for
    /// the paths that are there again.
    void setDifferences(std::vector<veltext::Change> differences);

    [[nodiscard]] const std::vector<veltext::Change> &differences() const;

    /// The selected differences, in the order of the list.
    [[nodiscard]] std::vector<veltext::Change> selectedDifferences() const;

    /// "added", "removed" or "changed", translated.
    [[nodiscard]] static QString kindText(veltext::DifferenceKind kind);

    /// Copies the selected rows to the clipboard; does nothing if none are selected.
    void copySelected() const;

signals:
    /// The button of a row was pressed.
    void acted(const veltext::Change &difference);

    /// Other rows are selected, or other rows are shown.
    void selectionMoved();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    void act(const QModelIndex &place);
    void restore(const std::vector<veltext::Change> &selected, const std::string &currentPath,
                 int current);
    void fitColumns();

    DifferenceModel *model_; ///< a child
    QString emptyText_;
    bool hasFitted_ = false;     ///< the columns have their first widths
    bool hasUserWidths_ = false; ///< the user has chosen the width of a column
};

} // namespace velEditor
