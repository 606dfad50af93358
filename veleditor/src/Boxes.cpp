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

/// The width of the longest line that still fits a box on this screen, in
/// pixels. The toolkit makes no box wider than this limit of its own; a label
/// that insisted would be cut off.
int widestLine(const QWidget &box)
{
    constexpr int besideText = 100; // icon, margins and gaps
    const int screen = box.screen()->availableGeometry().width();
    const int limit = screen <= 1024 ? screen : qMin(screen - 480, 1000);
    return limit - besideText;
}

/// The height that the text of a box may have on this screen, in pixels.
int highestText(const QWidget &box)
{
    return box.screen()->availableGeometry().height() / 2;
}

// A toolkit box takes Escape and its frame's close for its only button, or for
// one with a fitting role. Here they count only where the box says so.
class PlainBox : public QMessageBox
{
public:
    PlainBox(const MessageBox &box, QWidget *parent)
        : QMessageBox(box.icon, box.title, box.text, NoButton, parent), canEscape_(box.canEscape)
    {
        setObjectName(QStringLiteral("MessageBox"));
        setAccessibleName(box.title);
        makeSmallDialog(*this);
        setAttribute(Qt::WA_WindowPropagation); // the font of the window below
        setTextFormat(Qt::PlainText);
        setInformativeText(box.remark);
        for (QLabel *label : findChildren<QLabel *>()) {
            label->setTextFormat(Qt::PlainText);
            keepLinesWhole(*label);
        }
        keepButtonsOnScreen();
    }

    /// To be called once the buttons are in: a short text must not cut the
    /// title off. Icons would make some of the buttons look unlike the others.
    void finish()
    {
        for (QAbstractButton *button : buttons())
            button->setIcon(QIcon());
        makeRoomForTitle();
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (!canEscape_ && event->matches(QKeySequence::Cancel))
            event->accept();
        else
            QMessageBox::keyPressEvent(event);
    }

    void closeEvent(QCloseEvent *event) override
    {
        if (canEscape_)
            QMessageBox::closeEvent(event);
        else
            event->ignore();
    }

private:
    /// Icon, buttons and gaps of a title bar, in pixels.
    static constexpr int titleBarExtras = 140;

    // The texts have their line ends where they are meant to be; the toolkit
    // would wrap them at 500 pixels.
    void keepLinesWhole(QLabel &label)
    {
        label.ensurePolished();
        label.setWordWrap(false);
        if (!label.text().isEmpty())
            label.setMinimumWidth(qMin(label.sizeHint().width(), widestLine(*this)));
    }

    // A text may hold a value of any length, with no blanks in it, or as many lines
    // as a rule library has faults: a word that is wider than the box is broken,
    // and what the screen has no room for is scrolled.
    void keepButtonsOnScreen()
    {
        for (const char *name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
            if (auto *label = findChild<QLabel *>(QString::fromLatin1(name)))
                wrapWhereNeeded(*label);
        }
    }

    void wrapWhereNeeded(QLabel &label)
    {
        const QRect room(0, 0, widestLine(*this), QWIDGETSIZE_MAX);
        const QRect text = label.fontMetrics().boundingRect(
            room, Qt::TextWordWrap | Qt::TextExpandTabs, label.text());
        if (text.height() <= highestText(*this) && text.width() <= room.width())
            return;
        auto *wrapped = new WrappingLabel(label.text(), room.width(), this);
        wrapped->setObjectName(QStringLiteral("WrappedText"));
        const bool fits = wrapped->minimumHeight() <= highestText(*this);
        delete layout()->replaceWidget(&label, fits ? wrapped : scrolled(wrapped));
        label.hide(); // the box still has its text
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
        if (grid == nullptr)
            return;
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

// One role for all buttons keeps them in the order in which they are added.
int showButtons(QWidget *parent, const MessageBox &box, const QStringList &texts)
{
    PlainBox window(box, parent);
    QList<QAbstractButton *> buttons;
    for (const QString &text : texts) {
        QPushButton *button = window.addButton(text, QMessageBox::ActionRole);
        if (buttons.size() == box.defaultButton)
            window.setDefaultButton(button);
        buttons.append(button);
    }
    return show(window, buttons);
}

void tell(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
          const QString &remark = QString())
{
    MessageBox box;
    box.icon = icon;
    box.title = title;
    box.text = text;
    box.remark = remark;
    box.canEscape = true;
    static_cast<void>(ask(parent, box));
}

} // namespace

void inform(QWidget *parent, const QString &title, const QString &text)
{
    tell(parent, QMessageBox::Information, title, text);
}

void warn(QWidget *parent, const QString &title, const QString &text)
{
    tell(parent, QMessageBox::Warning, title, text);
}

void reportFailure(QWidget *parent, const QString &title, const QString &text,
                   const QString &remark)
{
    tell(parent, QMessageBox::Critical, title, text, remark);
}

int ask(QWidget *parent, const MessageBox &box)
{
    if (Application::hasFailed())
        return -1;
    if (boxAnswers())
        return boxAnswers()(box);
    const QStringList ok{QCoreApplication::translate("velEditor::Boxes", "&Ok")};
    return showButtons(parent, box, box.buttons.isEmpty() ? ok : box.buttons);
}

bool askYesNo(QWidget *parent, const QString &title, const QString &text)
{
    if (Application::hasFailed())
        return false;
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
    if (Application::hasFailed())
        return QString();
    if (fileNameAnswers())
        return fileNameAnswers()(title, proposal);
    return QFileDialog::getSaveFileName(parent, title, proposal);
}

int run(QDialog &dialog)
{
    if (Application::hasFailed())
        return QDialog::Rejected;
    const int result = dialog.exec();
    // A window manager that sees a box and then its dialog close may still be
    // giving the keys to the dialog, and would leave them nowhere.
    if (QWidget *parent = dialog.parentWidget())
        parent->activateWindow();
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
