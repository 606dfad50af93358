// Makes the widgets of the dialogs.
#include "veleditor/src/Widgets.h"

#include "veleditor/src/WrappingLabel.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTextEdit>
#include <QVBoxLayout>

#include <memory>

namespace velEditor {

namespace {

constexpr int buttonSpacing = 5;

/// The largest width of one part of a dialog on its screen, in pixels.
int widestPart(const QWidget &parent)
{
    return parent.screen()->availableGeometry().width() * 3 / 4;
}

} // namespace

QLabel *makeLabel(const QString &text, QWidget *parent)
{
    auto label = std::make_unique<QLabel>(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->ensurePolished();
    const int widest = widestPart(*parent);
    if (label->sizeHint().width() > widest) {
        return new WrappingLabel(text, widest, parent);
    }
    return label.release();
}

QPushButton *makeButton(const QString &text, const char *name, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

void pressOnCtrlReturn(QPushButton &button, QDialog &dialog)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *shortcut = new QShortcut(QKeySequence(Qt::CTRL | key), &dialog);
        shortcut->setAutoRepeat(false);
        QObject::connect(shortcut, &QShortcut::activated, &button, &QPushButton::click);
    }
}

QPushButton *addOkAndCancel(QVBoxLayout &layout, QDialog &dialog)
{
    const auto text = [](const char *english) {
        return QCoreApplication::translate("velEditor::Widgets", english);
    };
    auto *row = new QHBoxLayout;
    row->setSpacing(buttonSpacing);
    layout.addLayout(row);
    QPushButton *ok = makeButton(text("&Ok"), "Ok", &dialog);
    row->addWidget(ok);
    pressOnCtrlReturn(*ok, dialog);
    QPushButton *cancel = makeButton(text("&Cancel"), "Cancel", &dialog);
    QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    row->addWidget(cancel);
    return ok;
}

QComboBox *makeList(const char *name, const QString &accessibleName, QWidget *parent)
{
    auto *list = new QComboBox(parent);
    list->setObjectName(QString::fromLatin1(name));
    list->setAccessibleName(accessibleName);
    list->setMaximumWidth(widestPart(*parent));
    return list;
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
