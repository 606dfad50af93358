// The tool strip at the right end of the menu bar's row: buttons for what has no
// menu entry, and a menu with all of that.
//
// The strip belongs to the window, not to the menu bar, of which screen readers show
// only the menus. It takes no focus: every action in it has a key of its own.
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
    /// Has the button More alone.
    explicit Strip(QWidget *window);

    /// Adds a button for an action (not owned), before More. `name` is the name of
    /// the object and, translated, for a screen reader.
    void addButton(QAction &action, const char *name);

    /// Opens below More.
    [[nodiscard]] QMenu &menu() { return *menu_; }

    /// Takes its place at the right end of a part of the window. Where this is too
    /// narrow for all buttons, More is left.
    void fit(const QRect &room);

private:
    QToolButton *makeButton(const QString &name);

    QMenu *menu_;
    QList<QToolButton *> buttons_; ///< from left to right, all but More
    QToolButton *more_;
};

} // namespace velEditor
