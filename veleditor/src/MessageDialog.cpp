// Shows messages, and writes them to a file.
#include "veleditor/src/MessageDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/ScreenPlace.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/TextFile.h"
#include "veleditor/src/Widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>
#include <QVBoxLayout>

namespace velEditor {

namespace {

constexpr int indentPixels = 24;

QLabel *wrappedLabel(const QString &text, const char *name, QWidget *parent)
{
    QLabel *label = makeLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    return label;
}

/// Indents the continuation of wrapped lines, so that each message can be recognised.
void indentWrappedLines(QTextDocument &document)
{
    QTextBlockFormat hanging;
    hanging.setLeftMargin(indentPixels);
    hanging.setTextIndent(-indentPixels);
    QTextCursor all(&document);
    all.select(QTextCursor::Document);
    all.mergeBlockFormat(hanging);
}

} // namespace

MessageDialog::MessageDialog(QWidget *parent, const QString &name, const QString &title,
                             const QString &heading, const QString &fileButtonText,
                             const QString &defaultFileName, std::string_view messages,
                             bool questionMode, const QString &question)
    : QDialog(parent), defaultFileName_(defaultFileName),
      messageArea_(makeTextField("Messages", title, this))
{
    setUpDialog(*this, name, title);
    setModal(questionMode);
    setAttribute(Qt::WA_DeleteOnClose, !questionMode);

    messageArea_->setReadOnly(true);
    messageArea_->setPlainText(fromBytes(messages));
    indentWrappedLines(*messageArea_->document());

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(wrappedLabel(heading, "Heading", this));
    layout->addWidget(messageArea_);
    if (questionMode) {
        layout->addWidget(wrappedLabel(question, "Question", this));
    }
    addButtons(*layout, fileButtonText, questionMode);
    resize(sizeOnScreen(*this, QSize(600, 300)));
}

void MessageDialog::addButtons(QVBoxLayout &layout, const QString &fileButtonText,
                               bool questionMode)
{
    auto *row = new QHBoxLayout;
    layout.addLayout(row);
    auto *accepting =
        makeButton(questionMode ? tr("&Yes") : tr("&Ok"), questionMode ? "Yes" : "Ok", this);
    connect(accepting, &QPushButton::clicked, this, &QDialog::accept);
    row->addWidget(accepting);
    if (!questionMode) {
        pressOnCtrlReturn(*accepting, *this);
    }
    if (questionMode) {
        QPushButton *no = makeButton(tr("&No"), "No", this);
        connect(no, &QPushButton::clicked, this, &QDialog::reject);
        row->addWidget(no);
    }
    row->addStretch();
    QPushButton *file = makeButton(fileButtonText, "WriteToFile", this);
    connect(file, &QPushButton::clicked, this, &MessageDialog::writeMessagesToFile);
    row->addWidget(file);
}

void MessageDialog::showBeside(const QWidget &window)
{
    move(window.pos() + QPoint(50, 50));
    show();
    repaint();
}

void MessageDialog::writeMessagesToFile()
{
    const QString proposal =
        defaultFileName_.isEmpty() ? QStringLiteral("errormessages.txt") : defaultFileName_;
    const QString fileName = askSaveFileName(this, tr("Select File"), proposal);
    if (fileName.isEmpty()) {
        return;
    }

    TextFile file(toBytes(fileName));
    file.write(toBytes(plainText(*messageArea_->document())));
    if (!file.close()) {
        reportFailure(this, tr("Error Writing File"),
                      tr("Unable to write the messages to\n  ") + fileName + u'\n' +
                          fromBytes(file.error()));
    }
}

ErrorDialog::ErrorDialog(QWidget *parent, const QString &name, std::string_view messages,
                         bool questionMode)
    : MessageDialog(parent, name, tr("Command File Errors"),
                    tr("The following errors were encountered during validation:"),
                    tr("&Write Error Messages to File"), QStringLiteral("errormessages.txt"),
                    messages, questionMode,
                    tr("Would you like to save this file including the errors?"))
{
}

VELUpgradeMessagesDialog::VELUpgradeMessagesDialog(QWidget *parent, const QString &name,
                                                   std::string_view messages)
    : MessageDialog(parent, name, tr("VEL Upgrade Messages"),
                    tr("The following messages were generated when upgrading the VEL:"),
                    tr("&Write VEL Upgrade Messages to File"),
                    QStringLiteral("upgrademessages.txt"), messages, false, tr("Save Messages?"))
{
}

} // namespace velEditor
