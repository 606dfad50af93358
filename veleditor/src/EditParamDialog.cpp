#include "veleditor/src/EditParamDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTreeItem.h"
#include "veleditor/src/ValueText.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextDocument>
#include <QTextEdit>
#include <QVBoxLayout>

#include <optional>

namespace velEditor {

namespace {

/// Wide enough for the title.
constexpr int fewestPixels = 320;

} // namespace

EditParamDialog::EditParamDialog(QWidget *parent, const QString &caption, const VELTreeItem &item)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("EditParam"));
    setWindowTitle(caption);
    auto *layout = new QVBoxLayout(this);

    const std::string path = item.path();
    std::optional<std::string> current;
    static_cast<void>(velparser::getStringValue(path.c_str(), &current));
    value_ = current.value_or("");

    if (const char *error = velparser::getAllowedParamStrings(path.c_str(), &allowed_))
        warn(parent, tr("Error"), fromBytes(error));
    if (allowed_.empty())
        addTextField(*layout, item.label(), item.value());
    else
        addList(*layout, item.label());
    addButtons(*layout);
    setMinimumWidth(fewestPixels);
}

// A current value that is not among the allowed ones is shown, but cannot be
// chosen again once another is.
void EditParamDialog::addList(QVBoxLayout &layout, const QString &name)
{
    auto *label = new QLabel(tr("Select a new value for: ") + name, this);
    label->setTextFormat(Qt::PlainText);
    layout.addWidget(label);

    list_ = new QComboBox(this);
    list_->setObjectName(QStringLiteral("Values"));
    list_->setAccessibleName(name);
    list_->setPlaceholderText(fromBytes(value_));
    list_->setCurrentIndex(-1);
    for (const char *allowed : allowed_) {
        list_->addItem(fromBytes(allowed));
        if (allowed == value_)
            list_->setCurrentIndex(list_->count() - 1);
    }
    connect(list_, &QComboBox::textActivated, this, &EditParamDialog::doComboBox);
    layout.addWidget(list_);
}

void EditParamDialog::addTextField(QVBoxLayout &layout, const QString &name, const QString &text)
{
    auto *label = new QLabel(tr("Enter a new value for: ") + name, this);
    label->setTextFormat(Qt::PlainText);
    layout.addWidget(label);

    textField_ = new QTextEdit(this);
    textField_->setObjectName(QStringLiteral("Value"));
    textField_->setAccessibleName(name);
    textField_->setAcceptRichText(false);
    textField_->setTabChangesFocus(true);
    textField_->setPlainText(text);
    textField_->document()->setModified(false);
    textField_->selectAll();
    layout.addWidget(textField_);
}

void EditParamDialog::addButtons(QVBoxLayout &layout)
{
    auto *row = new QHBoxLayout;
    auto *ok = new QPushButton(tr("&Ok"), this);
    ok->setObjectName(QStringLiteral("Ok"));
    connect(ok, &QPushButton::clicked, this, &EditParamDialog::doOk);
    auto *cancel = new QPushButton(tr("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    row->addWidget(ok);
    row->addWidget(cancel);
    layout.addLayout(row);
}

void EditParamDialog::doOk()
{
    // An untouched field leaves the value as it is, byte for byte.
    if (textField_ != nullptr && textField_->document()->isModified()) {
        const std::string typed = toBytesInPlaceOf(singleLine(*textField_->document()), value_);
        if (const QString reason = whyFileCannotHold(typed); !reason.isEmpty()) {
            warn(this, windowTitle(), reason);
            return;
        }
        value_ = typed;
    }
    accept();
}

void EditParamDialog::doComboBox(const QString &)
{
    value_ = allowed_[static_cast<std::size_t>(list_->currentIndex())];
}

} // namespace velEditor
