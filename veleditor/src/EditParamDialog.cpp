// Builds the dialog for a value, and checks what was typed.
#include "veleditor/src/EditParamDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/StoredValue.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTreeItem.h"
#include "veleditor/src/ValueText.h"
#include "veleditor/src/Widgets.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTextDocument>
#include <QTextEdit>
#include <QVBoxLayout>

#include <utility>

namespace velEditor {

namespace {

/// Wide enough for the title.
constexpr int fewestPixels = 320;

} // namespace

EditParamDialog::EditParamDialog(QWidget *parent, const QString &caption, const VELTreeItem &item,
                                 TextEncoding fileEncoding)
    : QDialog(parent)
{
    setUpDialog(*this, QStringLiteral("EditParam"), caption);
    makeSmallDialog(*this);
    auto *layout = new QVBoxLayout(this);

    const std::string path = item.path();
    former_ = storedValue(path).value_or("");
    value_ = former_;
    encoding_ = encodingInPlaceOf(former_, fileEncoding);

    if (const char *error = velparser::getAllowedParamStrings(path.c_str(), &allowed_)) {
        warn(parent, tr("Error"), fromBytes(error));
    }
    if (allowed_.empty()) {
        addTextField(*layout, item.label(), item.value());
    } else {
        addList(*layout, item.label());
    }
    connect(addOkAndCancel(*layout, *this), &QPushButton::clicked, this, &EditParamDialog::doOk);
    setMinimumWidth(fewestPixels);
}

// If the current value is not an allowed one, it is shown. But the user cannot
// choose it again after choosing another value.
void EditParamDialog::addList(QVBoxLayout &layout, const QString &name)
{
    layout.addWidget(makeLabel(tr("Select a new value for: ") + name, this));
    list_ = makeList("Values", name, this);
    list_->setPlaceholderText(fromBytes(former_));
    int current = -1;
    for (const char *allowed : allowed_) {
        if (allowed == former_) {
            current = list_->count();
        }
        list_->addItem(fromBytes(allowed));
    }
    list_->setCurrentIndex(current);
    connect(list_, &QComboBox::textActivated, this, &EditParamDialog::doComboBox);
    layout.addWidget(list_);
}

void EditParamDialog::addTextField(QVBoxLayout &layout, const QString &name, const QString &text)
{
    layout.addWidget(makeLabel(tr("Enter a new value for: ") + name, this));
    textField_ = makeTextField("Value", name, this);
    textField_->setPlainText(text);
    textField_->document()->setModified(false);
    textField_->selectAll();
    layout.addWidget(textField_);
}

void EditParamDialog::doOk()
{
    if (textField_ == nullptr || takeText()) {
        accept();
    }
}

// If the user has not changed the field, the value keeps its bytes.
bool EditParamDialog::takeText()
{
    const QTextDocument &text = *textField_->document();
    if (!text.isModified()) {
        value_ = former_;
        return true;
    }
    EncodedText typed = encode(typedValue(text), encoding_);
    const QString reason = typed.refusal.isEmpty() ? whyFileCannotHold(typed.bytes) : typed.refusal;
    if (!reason.isEmpty()) {
        warn(this, windowTitle(), reason);
        textField_->setFocus();
        return false;
    }
    value_ = std::move(typed.bytes);
    return true;
}

void EditParamDialog::doComboBox(const QString &)
{
    value_ = allowed_[static_cast<std::size_t>(list_->currentIndex())];
}

} // namespace velEditor
