// The bar above the tree that says what has happened and offers choices, without a
// box that the user must answer.
//
// The window gives the bar a place while `isNeeded`; see `needChanged`. The bar never
// takes the keyboard focus: a choice is a button, which the user clicks, or presses
// with Alt and its letter.
//
// Several notices can wait. The one posted last is shown; when it is gone, the one
// before it is shown again.
#pragma once

#include <QFrame>
#include <QList>
#include <QString>

#include <functional>
#include <memory>

class QToolButton;

namespace velEditor {

class WrappingLabel;

/// What a button of a notice does.
struct NoticeChoice
{
    QString label; ///< with "&" before the letter of its key
    std::function<void()> act;
    bool endsNotice = true; ///< the notice goes before `act` is called
};

struct Notice
{
    /// What it is about, such as "file": a notice replaces another of the same kind.
    QString kind;
    QString text; ///< plain text
    QList<NoticeChoice> choices;
};

class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    /// Has no notice and is hidden.
    explicit NoticeBar(QWidget *window);
    ~NoticeBar() override;

    /// Shows a notice. The user can put it away without a choice, too.
    void post(Notice notice);

    /// Removes the notice of a kind; nothing happens if there is none.
    void withdraw(const QString &kind);

    [[nodiscard]] bool isNeeded() const { return !notices_.isEmpty(); }

    /// The text that is shown; empty without a notice.
    [[nodiscard]] QString text() const;

    /// The height for a width, in pixels; 0 without a notice.
    [[nodiscard]] int heightForWidth(int width) const override;

signals:
    /// The bar is needed, is no longer needed, or needs another height.
    void needChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showLast();
    void addChoice(const NoticeChoice &choice, const QString &kind);
    QToolButton *addButton(const QString &name, const QString &label);
    void arrange();
    /// Where the buttons are in a bar of a width that has `top` above them; they
    /// break into rows where they must.
    [[nodiscard]] QList<QRect> buttonPlaces(int width, int top) const;
    [[nodiscard]] int buttonsWidth() const;
    [[nodiscard]] bool fitsOneLine(int width) const;

    QList<Notice> notices_; ///< the last one is shown
    std::unique_ptr<WrappingLabel> text_;
    QList<QToolButton *> buttons_; ///< children, from left to right
};

} // namespace velEditor
