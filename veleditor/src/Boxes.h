// Everything that the editor asks or tells the user in a box of the toolkit:
// message boxes and the file dialog. All of them pass here, so that their form
// is settled once and a test can answer in the user's place.
//
// Every text is shown as it stands, never as markup. Nothing is asked any more
// once the application has failed: each question then gives its "no".
#pragma once

#include <QMessageBox>
#include <QString>
#include <QStringList>

#include <functional>

class QDialog;
class QWidget;

namespace velEditor {

/// One message box as the user sees it.
struct MessageBox
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    /// Below the text, where there is more to say; empty for nothing.
    QString remark;
    /// In the order shown; none stands for one button "&Ok".
    QStringList buttons;
    /// The button that Return presses.
    int defaultButton = 0;
    /// Whether Escape and the window frame close the box; it then gives −1.
    bool canEscape = false;
};

// --- Boxes with one Ok button -------------------------------------------------

void inform(QWidget *parent, const QString &title, const QString &text);
void warn(QWidget *parent, const QString &title, const QString &text);
void reportFailure(QWidget *parent, const QString &title, const QString &text,
                   const QString &remark = QString());

// --- Questions ----------------------------------------------------------------

/// The index of the button that was pressed, −1 for none.
[[nodiscard]] int ask(QWidget *parent, const MessageBox &box);

/// A question with the standard buttons Yes and No, of which No is the default.
[[nodiscard]] bool askYesNo(QWidget *parent, const QString &title, const QString &text);

/// The name of a file to be written, empty when the user cancels.
[[nodiscard]] QString askSaveFileName(QWidget *parent, const QString &title,
                                      const QString &proposal);

/// Runs a dialog modally and gives its result.
int run(QDialog &dialog);

// --- Answers for tests --------------------------------------------------------

/// While set, boxes are not shown: the function is given each and its result
/// is the index of the button pressed. Of `askYesNo` the buttons are "Yes" and
/// "No". An empty function restores the real boxes.
void setBoxAnswers(std::function<int(const MessageBox &)> answers);

/// The same for the file dialog: given title and proposal, gives the name.
void setFileNameAnswers(std::function<QString(const QString &, const QString &)> answers);

} // namespace velEditor
