// Builds the dialog for a new parameter, and checks its name and value.
#include "veleditor/src/AddParamDialog.h"

#include "velapilt/src/velPathParts.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/StoredValue.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/ValueEntry.h"
#include "veleditor/src/ValueText.h"
#include "veleditor/src/Widgets.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <string_view>

namespace velEditor {

namespace {

constexpr std::string_view nameCharacters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_ ";

bool isLetterOrDigit(char c)
{
    return c != '_' && c != ' ' && nameCharacters.find(c) != std::string_view::npos;
}

/// The first character in a UTF-8 text that names cannot contain; empty if there is
/// none.
QString firstWrongCharacter(const std::string &name)
{
    const std::size_t place = name.find_first_not_of(nameCharacters);
    if (place == std::string::npos) {
        return QString();
    }
    const auto wrong = QString::fromUtf8(name.c_str() + place);
    return wrong.left(wrong[0].isHighSurrogate() ? 2 : 1);
}

/// Whether the rules have answered that any name may be added.
bool isAnyName(const velStringList &names)
{
    return names.size() == 1 && std::string_view(names[0]) == "-1";
}

/// The first required parameter that the object does not have; empty if it has all,
/// or if the rules do not know.
QString missingParameter(const std::string &objectPath)
{
    velStringList names;
    if (velparser::getAllowedParams(objectPath.c_str(), &names, 2) != nullptr || names.empty() ||
        isAnyName(names)) {
        return QString();
    }
    return fromBytes(names[0]);
}

std::string withoutUnderscores(std::string name)
{
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

} // namespace

AddParamDialog::AddParamDialog(QWidget *parent, const QString &caption,
                               const std::string &objectPath, TextEncoding encoding)
    : QDialog(parent), objectPath_(objectPath), encoding_(encoding)
{
    setUpDialog(*this, QStringLiteral("AddParam"), caption);
    makeSmallDialog(*this);
    auto *layout = new QVBoxLayout(this);

    velStringList names;
    if (const char *error = velparser::getAllowedParams(objectPath.c_str(), &names, 1)) {
        warn(parent, tr("Error"), fromBytes(error));
    }

    const QString path = fromBytes(objectPath);
    if (names.empty()) {
        addRefusal(*layout, path);
        return;
    }
    if (isAnyName(names)) {
        addFreeName(*layout, path);
    } else {
        addNameList(*layout, path, names);
    }
    addValueAndButtons(*layout);
}

void AddParamDialog::addRefusal(QVBoxLayout &layout, const QString &path)
{
    layout.addWidget(
        makeLabel(tr("No new parameters can be added to the\n") + path +
                      tr("\nsection of the ZOT Command File.\n\n") +
                      tr("To add a parameter to a different section, please highlight\n") +
                      tr("the appropriate section before attempting to add the parameter.\n"),
                  this));
    QPushButton *ok = makeButton(tr("&Ok"), "Ok", this);
    connect(ok, &QPushButton::clicked, this, &QDialog::reject);
    layout.addWidget(ok);
}

void AddParamDialog::addFreeName(QVBoxLayout &layout, const QString &path)
{
    layout.addWidget(makeLabel(tr("Adding new parameter to: ") + path, this));
    layout.addWidget(
        makeLabel(tr("Enter the name and value of the new parameter to add inside ") + path, this));
    auto *row = new QHBoxLayout;
    row->setSpacing(5);
    row->addWidget(makeLabel(tr("Name:"), this));
    nameEntry_ = new QLineEdit(this);
    nameEntry_->setObjectName(QStringLiteral("Name"));
    nameEntry_->setAccessibleName(tr("Name of the new parameter"));
    connect(nameEntry_, &QLineEdit::textChanged, this, &AddParamDialog::saveParamName);
    nameEntry_->setText(missingParameter(objectPath_));
    nameEntry_->selectAll(); // so that typing replaces it
    nameField_ = nameEntry_;
    row->addWidget(nameEntry_);
    layout.addLayout(row);
}

void AddParamDialog::addNameList(QVBoxLayout &layout, const QString &path,
                                 const velStringList &names)
{
    layout.addWidget(makeLabel(tr("Adding new parameter to: ") + path, this));
    layout.addWidget(makeLabel(tr("Select the new parameter to add, and enter a value"), this));
    QComboBox *list = makeList("editable combo", tr("Name of the new parameter"), this);
    list->setEditable(true);
    list->setInsertPolicy(QComboBox::NoInsert);
    list->setCompleter(nullptr); // a completer would change typed names
    for (const char *name : names) {
        list->addItem(fromBytes(name));
    }
    list->lineEdit()->selectAll(); // so that typing replaces it
    paramName_ = names[0];
    connect(list, &QComboBox::textActivated, this, &AddParamDialog::saveParamName);
    connect(list, &QComboBox::editTextChanged, this, &AddParamDialog::saveParamName);
    layout.addWidget(list);
    nameField_ = list;
}

void AddParamDialog::addValueAndButtons(QVBoxLayout &layout)
{
    layout.addWidget(makeLabel(tr("Value:"), this));
    valueEntry_ = new ValueEntry(tr("Value of the new parameter"), encoding_, this);
    layout.addWidget(valueEntry_);
    offerValue();
    connect(addOkAndCancel(layout, *this), &QPushButton::clicked, this, &AddParamDialog::checkOK);
}

void AddParamDialog::saveParamName(const QString &name)
{
    paramName_ = toBytes(name);
    offerValue();
}

std::string AddParamDialog::storedName() const
{
    return toBytes(fromBytes(withoutUnderscores(paramName_)).simplified());
}

// A name that no parameter can have would make another path, so it is not looked up.
void AddParamDialog::offerValue()
{
    if (valueEntry_ == nullptr) {
        return;
    }
    const std::string name = storedName();
    const bool isName =
        !name.empty() && isLetterOrDigit(paramName_.front()) && firstWrongCharacter(name).isEmpty();
    valueEntry_->offer(isName ? velPathOfChild(objectPath_, name) : std::string());
}

std::string AddParamDialog::value() const
{
    return valueEntry_ != nullptr ? valueEntry_->value().bytes : std::string();
}

void AddParamDialog::checkOK()
{
    if (nameEntry_ != nullptr) {
        saveParamName(nameEntry_->text());
    }
    if (!checkNameStart() || !checkValueGiven() || !checkNameCharacters() || !checkValueFits()) {
        return;
    }
    if (paramName_.find('_') != std::string::npos) {
        paramName_ = withoutUnderscores(paramName_);
        inform(this, tr("Underscores replaced"),
               tr("Underscores (`_') are not valid characters in a parameter name.\n"
                  "Underscores have been replaced with spaces in your parameter name."));
    }
    accept();
}

bool AddParamDialog::checkNameStart()
{
    if (paramName_.empty()) {
        refuse(*nameField_, tr("Missing Parameter Name"),
               tr("You must enter a name for your parameter before continuing."));
        return false;
    }
    if (!isLetterOrDigit(paramName_.front())) {
        refuse(*nameField_, tr("Invalid Parameter Name"),
               tr("Parameter names must begin with a letter or a number.\nPlease correct your "
                  "parameter name before continuing."));
        return false;
    }
    return true;
}

bool AddParamDialog::checkValueGiven()
{
    const EncodedText given = valueEntry_->value();
    if (!given.bytes.empty() || !given.refusal.isEmpty()) {
        return true;
    }
    refuse(*valueEntry_, tr("Missing Parameter Value"),
           tr("You must enter a parameter value before continuing."));
    return false;
}

bool AddParamDialog::checkNameCharacters()
{
    const QString wrong = firstWrongCharacter(paramName_);
    if (wrong.isEmpty()) {
        return true;
    }
    refuse(*nameField_, tr("Invalid Parameter Name"),
           tr("Error: \"") + wrong +
               tr("\" is not a valid character in a parameter name.\nPlease correct your "
                  "parameter name before continuing."));
    return false;
}

bool AddParamDialog::checkValueFits()
{
    const EncodedText given = valueEntry_->value();
    const QString reason = given.refusal.isEmpty() ? whyFileCannotHold(given.bytes) : given.refusal;
    if (reason.isEmpty()) {
        return true;
    }
    refuse(*valueEntry_, windowTitle(), reason);
    return false;
}

void AddParamDialog::refuse(QWidget &field, const QString &title, const QString &reason)
{
    warn(this, title, reason);
    field.setFocus();
}

} // namespace velEditor
