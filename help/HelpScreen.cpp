// Warning boxes and the wait cursor of the help client.
#include "help/HelpScreen.h"

#include <QApplication>
#include <QCursor>
#include <QMessageBox>

#include <cstdio>

namespace velEditor {

void showHelpWarning(const std::string &title, const std::string &text)
{
    if (qApp == nullptr) {
        std::fprintf(stderr, "%s: %s\n", title.c_str(), text.c_str());
        return;
    }
    QMessageBox box(QMessageBox::Warning, QString::fromStdString(title),
                    QString::fromStdString(text), QMessageBox::Ok);
    box.setObjectName(QStringLiteral("HelpWarning"));
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

HelpWaitCursor::HelpWaitCursor() : shown_(qApp != nullptr)
{
    if (shown_) {
        QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    }
}

HelpWaitCursor::~HelpWaitCursor()
{
    if (shown_) {
        QApplication::restoreOverrideCursor();
    }
}

} // namespace velEditor
