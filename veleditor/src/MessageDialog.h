// Dialogs that show a block of messages and can write it to a file; as a
// question they also return the user's yes or no.
//
// An informing dialog is modeless and deletes itself when it is closed; the
// caller creates it with `new`, gives it a parent and shows it. A question is
// run modally by its caller, who owns it: accepted is yes, rejected is no or
// closed.
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
    /// `messages` are bytes as the database gave them; `question` is shown in
    /// question mode only.
    MessageDialog(QWidget *parent, const QString &name, const QString &title,
                  const QString &heading, const QString &fileButtonText,
                  const QString &defaultFileName, std::string_view messages, bool questionMode,
                  const QString &question);

public slots:
    /// Asks for a file and writes the messages shown to it, in UTF-8. The
    /// dialog stays open.
    void writeMessagesToFile();

private:
    void addButtons(QVBoxLayout &layout, const QString &fileButtonText, bool questionMode);

    QString defaultFileName_;
    QTextEdit *messageArea_;
};

/// The findings of a validation; as a question, whether to save all the same.
class ErrorDialog : public MessageDialog
{
    Q_OBJECT

public:
    ErrorDialog(QWidget *parent, const QString &name, std::string_view messages, bool questionMode);
};

/// What the upgrade of a command file has changed.
class VELUpgradeMessagesDialog : public MessageDialog
{
    Q_OBJECT

public:
    VELUpgradeMessagesDialog(QWidget *parent, const QString &name, std::string_view messages);
};

} // namespace velEditor
