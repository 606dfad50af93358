#include "veleditor/src/Widgets.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>

namespace velEditor {

QLabel *makeLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QPushButton *makeButton(const QString &text, const char *name, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

QTextEdit *makeTextField(const char *name, const QString &accessibleName, QWidget *parent)
{
    auto *field = new QTextEdit(parent);
    field->setObjectName(QString::fromLatin1(name));
    field->setAccessibleName(accessibleName);
    field->setAcceptRichText(false);
    field->setTabChangesFocus(true);
    return field;
}

void setUpDialog(QDialog &dialog, const QString &name, const QString &title)
{
    dialog.setObjectName(name);
    dialog.setAccessibleName(title);
    dialog.setWindowTitle(title);
    dialog.setAttribute(Qt::WA_WindowPropagation);
}

void makeSmallDialog(QDialog &dialog)
{
    dialog.setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
}

} // namespace velEditor
