// Shows message boxes that fit the screen, and passes them to tests.
#include "veleditor/src/Boxes.h"

#include "veleditor/src/Application.h"
#include "veleditor/src/Widgets.h"
#include "veleditor/src/WrappingLabel.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QFileDialog>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpacerItem>

#include <utility>

namespace velEditor {

namespace {

/// The width of the longest line that fits into a box on this screen, in pixels.
/// The toolkit does not make boxes wider than this, and would cut off a wider
/// label.
int widestLine(const QWidget &box)
{
    constexpr int besideText = 100; // icon, margins and gaps
    const int screen = box.screen()->availableGeometry().width();
    const int limit = screen <= 1024 ? screen : qMin(screen - 480, 1000);
    return limit - besideText;
}

/// The largest height of a box's text on this screen, in pixels.
int highestText(const QWidget &box)
{
    return box.screen()->availableGeometry().height() / 2;
}

// In a toolkit box, Escape and the frame's close button press the only button or
// one with a suitable role. Here they work only if the box allows it.
class PlainBox : public QMessageBox
{
public:
    PlainBox(const MessageBox &box, QWidget *parent)
        : QMessageBox(box.icon, box.title, box.text, NoButton, parent), canEscape_(box.canEscape)
    {
        setObjectName(QStringLiteral("MessageBox"));
        setAccessibleName(box.title);
        makeSmallDialog(*this);
        setAttribute(Qt::WA_WindowPropagation); // use the font of the parent window
        setTextFormat(Qt::PlainText);
        setInformativeText(box.details);
        for (QLabel *label : findChildren<QLabel *>()) {
            label->setTextFormat(Qt::PlainText);
            keepLinesWhole(*label);
        }
        keepButtonsOnScreen();
    }

    /// Call this when the box has its buttons. It makes the box wide enough for
    /// its title, and removes icons, because only some of the buttons would have
    /// them.
    void finish()
    {
        for (QAbstractButton *button : buttons()) {
            button->setIcon(QIcon());
        }
        makeRoomForTitle();
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (!canEscape_ && event->matches(QKeySequence::Cancel)) {
            event->accept();
        } else {
            QMessageBox::keyPressEvent(event);
        }
    }

    void closeEvent(QCloseEvent *event) override
    {
        if (canEscape_) {
            QMessageBox::closeEvent(event);
        } else {
            event->ignore();
        }
    }

private:
    /// Width of the icon, buttons and gaps of a title bar, in pixels.
    static constexpr int titleBarExtras = 140;

    // The texts already have their line ends; the toolkit would wrap them at 500
    // pixels.
    void keepLinesWhole(QLabel &label)
    {
        label.ensurePolished();
        label.setWordWrap(false);
        if (!label.text().isEmpty()) {
            label.setMinimumWidth(qMin(label.sizeHint().width(), widestLine(*this)));
        }
    }

    // A text may contain a long value without spaces, or a line for each fault in
    // a rule library. So a word that is wider than the box is broken, and a text
    // that is higher than the screen is scrolled.
    void keepButtonsOnScreen()
    {
        for (const char *name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
            if (auto *label = findChild<QLabel *>(QString::fromLatin1(name))) {
                wrapWhereNeeded(*label);
            }
        }
    }

    void wrapWhereNeeded(QLabel &label)
    {
        const QRect room(0, 0, widestLine(*this), QWIDGETSIZE_MAX);
        const QRect text = label.fontMetrics().boundingRect(
            room, Qt::TextWordWrap | Qt::TextExpandTabs, label.text());
        if (text.height() <= highestText(*this) && text.width() <= room.width()) {
            return;
        }
        auto *wrapped = new WrappingLabel(label.text(), room.width(), this);
        wrapped->setObjectName(QStringLiteral("WrappedText"));
        const bool fits = wrapped->minimumHeight() <= highestText(*this);
        delete layout()->replaceWidget(&label, fits ? wrapped : scrolled(wrapped));
        label.hide(); // the box keeps its text
    }

    QWidget *scrolled(WrappingLabel *text)
    {
        auto *area = new QScrollArea(this);
        area->setObjectName(QStringLiteral("ScrolledText"));
        area->setAccessibleName(windowTitle());
        area->setFrameShape(QFrame::NoFrame);
        area->setWidgetResizable(true);
        const int barWidth = area->verticalScrollBar()->sizeHint().width();
        area->setMinimumSize(text->minimumWidth(), highestText(*this));
        text->setNarrowest(text->minimumWidth() - barWidth);
        area->setWidget(text);
        return area;
    }

    void makeRoomForTitle()
    {
        auto *grid = qobject_cast<QGridLayout *>(layout());
        if (grid == nullptr) {
            return;
        }
        const int width = fontMetrics().horizontalAdvance(windowTitle()) + titleBarExtras;
        grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }

    bool canEscape_;
};

std::function<int(const MessageBox &)> &boxAnswers()
{
    static std::function<int(const MessageBox &)> answers;
    return answers;
}

std::function<QString(const QString &, const QString &)> &fileNameAnswers()
{
    static std::function<QString(const QString &, const QString &)> answers;
    return answers;
}

int show(PlainBox &window, const QList<QAbstractButton *> &buttons)
{
    window.finish();
    window.exec();
    return static_cast<int>(buttons.indexOf(window.clickedButton()));
}

// With one role for all buttons, the toolkit keeps their order.
int showButtons(QWidget *parent, const MessageBox &box, const QStringList &texts)
{
    PlainBox window(box, parent);
    QList<QAbstractButton *> buttons;
    for (const QString &text : texts) {
        QPushButton *button = window.addButton(text, QMessageBox::ActionRole);
        if (buttons.size() == box.defaultButton) {
            window.setDefaultButton(button);
        }
        buttons.append(button);
    }
    return show(window, buttons);
}

void showText(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
              const QString &details = QString())
{
    MessageBox box;
    box.icon = icon;
    box.title = title;
    box.text = text;
    box.details = details;
    box.canEscape = true;
    static_cast<void>(ask(parent, box));
}

} // namespace

void inform(QWidget *parent, const QString &title, const QString &text)
{
    showText(parent, QMessageBox::Information, title, text);
}

void warn(QWidget *parent, const QString &title, const QString &text)
{
    showText(parent, QMessageBox::Warning, title, text);
}

void reportFailure(QWidget *parent, const QString &title, const QString &text,
                   const QString &details)
{
    showText(parent, QMessageBox::Critical, title, text, details);
}

int ask(QWidget *parent, const MessageBox &box)
{
    if (Application::hasFailed()) {
        return -1;
    }
    if (boxAnswers()) {
        return boxAnswers()(box);
    }
    const QStringList ok{QCoreApplication::translate("velEditor::Boxes", "&Ok")};
    return showButtons(parent, box, box.buttons.isEmpty() ? ok : box.buttons);
}

bool askYesNo(QWidget *parent, const QString &title, const QString &text)
{
    if (Application::hasFailed()) {
        return false;
    }
    MessageBox box;
    box.icon = QMessageBox::Question;
    box.title = title;
    box.text = text;
    box.defaultButton = 1;
    box.canEscape = true;
    if (boxAnswers()) {
        box.buttons = QStringList{QStringLiteral("Yes"), QStringLiteral("No")};
        return boxAnswers()(box) == 0;
    }
    PlainBox window(box, parent);
    QAbstractButton *yes = window.addButton(QMessageBox::Yes);
    window.setDefaultButton(window.addButton(QMessageBox::No));
    return show(window, {yes}) == 0;
}

QString askSaveFileName(QWidget *parent, const QString &title, const QString &proposal)
{
    if (Application::hasFailed()) {
        return QString();
    }
    if (fileNameAnswers()) {
        return fileNameAnswers()(title, proposal);
    }
    return QFileDialog::getSaveFileName(parent, title, proposal);
}

int run(QDialog &dialog)
{
    if (Application::hasFailed()) {
        return QDialog::Rejected;
    }
    const int result = dialog.exec();
    // When a box and then its dialog close, a window manager may still be moving
    // the keyboard focus to the dialog. Then no window would have it.
    if (QWidget *parent = dialog.parentWidget()) {
        parent->activateWindow();
    }
    return result;
}

void setBoxAnswers(std::function<int(const MessageBox &)> answers)
{
    boxAnswers() = std::move(answers);
}

void setFileNameAnswers(std::function<QString(const QString &, const QString &)> answers)
{
    fileNameAnswers() = std::move(answers);
}

} // namespace velEditor
