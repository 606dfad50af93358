// The tool strip at the right end of the menu bar's row: buttons for actions without a menu
// entry, and a menu with all of these actions.
//
// The strip is a child of the window, not of the menu bar, because screen readers show only
// the menus of a menu bar. It does not take the focus: every action in it has its own key.
#pragma once

#include <QList>
#include <QWidget>

class QAction;
class QMenu;
class QRect;
class QToolButton;

namespace velEditor {

class Strip : public QWidget
{
    Q_OBJECT

public:
    /// Has only the button More.
    explicit Strip(QWidget *window);

    /// Adds a button for an action (not owned), before More. `name` is the name of
    /// the object and, translated, for a screen reader.
    void addButton(QAction &action, const char *name);

    /// The menu that opens below More.
    [[nodiscard]] QMenu &menu() { return *menu_; }

    /// Moves to the right end of a part of the window. If this part is too narrow for all
    /// buttons, only More is shown.
    void fit(const QRect &room);

private:
    QToolButton *makeButton(const QString &name);

    QMenu *menu_;
    QList<QToolButton *> buttons_; ///< from left to right, without More
    QToolButton *more_;
};

} // namespace velEditor
