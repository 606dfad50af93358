// Dialogs that show a list of messages and can write it to a file. As a question they
// also return the user's yes or no.
//
// A dialog that only informs is modeless and deletes itself when it closes; the caller
// creates it with `new`, gives it a parent and shows it. A question belongs to its
// caller, who runs it modally: accepted means yes, rejected means no or closed.
#pragma once

#include <QDialog>

#include <string_view>

class QTextEdit;
class QVBoxLayout;

namespace velEditor {

class MessageDialog : public QDialog
{
    Q_OBJECT

public:
    /// `messages` are the bytes of the database; `question` is shown only in question
    /// mode.
    MessageDialog(QWidget *parent, const QString &name, const QString &title,
                  const QString &heading, const QString &fileButtonText,
                  const QString &defaultFileName, std::string_view messages, bool questionMode,
                  const QString &question);

    /// Shows the dialog at once, next to the corner of a window and not on top of it.
    void showBeside(const QWidget &window);

public slots:
    /// Asks for a file and writes the messages to it, in UTF-8. The dialog stays
    /// open.
    void writeMessagesToFile();

private:
    void addButtons(QVBoxLayout &layout, const QString &fileButtonText, bool questionMode);

    QString defaultFileName_;
    QTextEdit *messageArea_;
};

/// The findings of a validation; as a question, whether to save anyway.
class ErrorDialog : public MessageDialog
{
    Q_OBJECT

public:
    ErrorDialog(QWidget *parent, const QString &name, std::string_view messages, bool questionMode);
};

/// The changes that an upgrade has made.
class VELUpgradeMessagesDialog : public MessageDialog
{
    Q_OBJECT

public:
    VELUpgradeMessagesDialog(QWidget *parent, const QString &name, std::string_view messages);
};

} // namespace velEditor
