// The notices that wait, and where text and buttons of the last one are.
#include "veleditor/src/NoticeBar.h"

#include "veleditor/src/WrappingLabel.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QEvent>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace velEditor {

namespace {

/// Around and between text and buttons, in pixels.
constexpr int gap = 6;
/// A text narrower than this is hard to read: the buttons go below it.
constexpr int narrowestText = 200;

} // namespace

NoticeBar::NoticeBar(QWidget *window) : QFrame(window)
{
    setObjectName(QStringLiteral("notice"));
    setAccessibleName(tr("Notice"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    hide();
}

NoticeBar::~NoticeBar() = default;

void NoticeBar::post(Notice notice)
{
    notices_.removeIf([&](const Notice &other) { return other.kind == notice.kind; });
    notices_.append(std::move(notice));
    showLast();
}

void NoticeBar::withdraw(const QString &kind)
{
    if (notices_.removeIf([&](const Notice &other) { return other.kind == kind; }) > 0)
        showLast();
}

QString NoticeBar::text() const
{
    return isNeeded() ? notices_.constLast().text : QString();
}

void NoticeBar::showLast()
{
    // A button may be the one that is being pressed.
    for (QToolButton *button : std::as_const(buttons_)) {
        button->hide();
        button->setObjectName(QString());
        button->deleteLater();
    }
    buttons_.clear();
    text_.reset();
    if (isNeeded()) {
        const Notice &notice = notices_.constLast();
        text_ = std::make_unique<WrappingLabel>(notice.text, 0, this);
        text_->setObjectName(QStringLiteral("noticeText"));
        text_->setForegroundRole(QPalette::ToolTipText);
        text_->show();
        for (const NoticeChoice &choice : notice.choices)
            addChoice(choice, notice.kind);
        addChoice({tr("&Close"), [] {}}, notice.kind);
        setAccessibleDescription(notice.text);
    }
    setVisible(isNeeded());
    emit needChanged();
    arrange();
    if (isNeeded()) {
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

void NoticeBar::addChoice(const NoticeChoice &choice, const QString &kind)
{
    const QString name = QString(choice.label).remove(u'&');
    connect(addButton(name, choice.label), &QToolButton::clicked, this, [this, choice, kind] {
        const std::function<void()> act = choice.act;
        if (choice.endsNotice)
            withdraw(kind);
        act();
    });
}

QToolButton *NoticeBar::addButton(const QString &name, const QString &label)
{
    auto *button = new QToolButton(this);
    button->setObjectName(name);
    button->setAccessibleName(name);
    button->setText(label);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setFocusPolicy(Qt::NoFocus);
    button->setForegroundRole(QPalette::ButtonText);
    button->show();
    buttons_.append(button);
    return button;
}

int NoticeBar::buttonsWidth() const
{
    int width = 0;
    for (const QToolButton *button : buttons_) {
        width += gap + button->sizeHint().width();
    }
    return width;
}

bool NoticeBar::fitsOneLine(int width) const
{
    return width - 2 * gap - buttonsWidth() >= narrowestText;
}

QList<QRect> NoticeBar::buttonPlaces(int width, int top) const
{
    QList<QRect> places;
    int left = std::max(gap, width - buttonsWidth());
    for (const QToolButton *button : buttons_) {
        const QSize size = button->sizeHint();
        if (left > gap && left + size.width() > width - gap) {
            left = gap;
            top = places.constLast().bottom() + 1 + gap;
        }
        places.append(QRect(QPoint(left, top), size));
        left += size.width() + gap;
    }
    return places;
}

int NoticeBar::heightForWidth(int width) const
{
    if (!isNeeded()) {
        return 0;
    }
    const int room = std::max(width - 2 * gap, 1);
    if (!fitsOneLine(width)) {
        const int below = text_->heightForWidth(room) + 2 * gap;
        return buttonPlaces(width, below).constLast().bottom() + 1 + gap;
    }
    const int text = text_->heightForWidth(room - buttonsWidth());
    return std::max(text, buttonPlaces(width, 0).constLast().height()) + 2 * gap;
}

void NoticeBar::arrange()
{
    if (!isNeeded()) {
        return;
    }
    QRect room = rect().adjusted(gap, gap, -gap, -gap);
    int top = gap;
    if (fitsOneLine(width())) {
        room.setRight(room.right() - buttonsWidth());
    } else {
        room.setHeight(text_->heightForWidth(room.width()));
        top = room.bottom() + 1 + gap;
    }
    text_->setMinimumSize(0, 0); // the bar asks for the height that the text needs
    text_->setGeometry(room);
    const QList<QRect> places = buttonPlaces(width(), top);
    for (int i = 0; i < places.size(); ++i) {
        buttons_[i]->setGeometry(places[i]);
    }
}

void NoticeBar::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    arrange();
}

void NoticeBar::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::FontChange && isNeeded())
        emit needChanged();
}

} // namespace velEditor
