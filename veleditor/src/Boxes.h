// All message boxes of the editor, and its file dialog. They are made here, so that
// all have the same form and a test can answer instead of the user.
//
// Every text is shown as plain text, never as markup. After the application has
// failed, no question is shown; each returns its "no".
#pragma once

#include <QMessageBox>
#include <QString>
#include <QStringList>

#include <functional>

class QDialog;
class QWidget;

namespace velEditor {

/// The content of one message box.
struct MessageBox
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    /// More text, shown below `text`; may be empty.
    QString details;
    /// The buttons in the order shown; none means one button "&Ok".
    QStringList buttons;
    /// The button that Return presses.
    int defaultButton = 0;
    /// Whether Escape and the window frame close the box, which then returns −1.
    bool canEscape = false;
};

// --- Boxes with one Ok button -------------------------------------------------

void inform(QWidget *parent, const QString &title, const QString &text);
void warn(QWidget *parent, const QString &title, const QString &text);
void reportFailure(QWidget *parent, const QString &title, const QString &text,
                   const QString &details = QString());

// --- Questions ----------------------------------------------------------------

/// Shows the box. Returns the index of the pressed button, −1 for none.
[[nodiscard]] int ask(QWidget *parent, const MessageBox &box);

/// Asks a question with the standard buttons Yes and No; No is the default.
[[nodiscard]] bool askYesNo(QWidget *parent, const QString &title, const QString &text);

/// Asks for the name of a file to write; empty if the user cancels.
[[nodiscard]] QString askSaveFileName(QWidget *parent, const QString &title,
                                      const QString &proposal);

/// Runs a dialog modally and returns its result.
int run(QDialog &dialog);

// --- Answers for tests --------------------------------------------------------

/// Sets a function that answers boxes instead of showing them. It receives each box
/// and returns the index of the pressed button; the buttons of `askYesNo` are "Yes"
/// and "No". An empty function restores the real boxes.
void setBoxAnswers(std::function<int(const MessageBox &)> answers);

/// The same for the file dialog; the function receives title and proposal and returns
/// the name.
void setFileNameAnswers(std::function<QString(const QString &, const QString &)> answers);

} // namespace velEditor
