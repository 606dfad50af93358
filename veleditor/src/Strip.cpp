// The buttons of the strip, and its place in the row.
#include "veleditor/src/Strip.h"

#include <QAction>
#include <QMenu>
#include <QToolButton>

namespace velEditor {

Strip::Strip(QWidget *window) : QWidget(window), menu_(new QMenu(tr("More"), this))
{
    setObjectName(QStringLiteral("strip"));
    setAccessibleName(tr("Tools"));
    menu_->setObjectName(QStringLiteral("MoreMenu"));
    menu_->setAccessibleName(menu_->title());
    menu_->setFont(font()); // without this, a window has the font of the desktop
    more_ = makeButton(QStringLiteral("More"));
    more_->setText(tr("More"));
    more_->setAccessibleName(more_->text());
    more_->setPopupMode(QToolButton::InstantPopup);
    more_->setMenu(menu_);
}

QToolButton *Strip::makeButton(const QString &name)
{
    auto *button = new QToolButton(this);
    button->setObjectName(name);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return button;
}

void Strip::addButton(QAction &action, const char *name)
{
    QToolButton *button = makeButton(QString::fromLatin1(name));
    button->setDefaultAction(&action);
    button->setAccessibleName(tr(name));
    buttons_.append(button);
}

void Strip::fit(const QRect &room)
{
    int width = more_->sizeHint().width();
    for (const QToolButton *button : buttons_) {
        width += button->sizeHint().width();
    }
    const bool showsAll = width <= room.width();
    if (!showsAll) {
        width = more_->sizeHint().width();
    }
    setGeometry(room.right() + 1 - width, room.top(), width, room.height());

    int left = 0;
    for (QToolButton *button : buttons_) {
        button->setVisible(showsAll);
        button->setGeometry(left, 0, button->sizeHint().width(), room.height());
        left += showsAll ? button->width() : 0;
    }
    more_->setGeometry(left, 0, more_->sizeHint().width(), room.height());
}

} // namespace velEditor
