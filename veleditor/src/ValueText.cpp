#include "veleditor/src/ValueText.h"

#include "veltext/valueEdit.h"
#include "veltext/valueText.h"

#include <QCoreApplication>

namespace velEditor {

namespace {

QString sentence(const char *text)
{
    return QCoreApplication::translate("velEditor::ValueText", text);
}

} // namespace

QString whyFileCannotHold(std::string_view value)
{
    const veltext::ValueCheck check = veltext::checkValueText(value);
    switch (check.fault) {
    case veltext::ValueFault::ControlCharacter:
        return sentence("A value cannot hold control characters.\n"
                        "Please correct the value before continuing.");
    case veltext::ValueFault::Comment:
        return sentence("A value cannot hold the character \"#\": it begins a comment in a "
                        "command file.\nWrite \"\\#\" where you mean the character itself.");
    case veltext::ValueFault::FinalBackslash:
        if (check.position + 1 == value.size())
            break; // the empty comment after it keeps it
        return sentence("A value cannot end in a back-slash and blanks: the line would continue "
                        "in a command file.\nPlease correct the value before continuing.");
    case veltext::ValueFault::WhiteSpace: // several blanks mean what one does
    case veltext::ValueFault::None:
        break;
    }
    return QString();
}

std::string parameterLine(const std::string &name, const std::string &value)
{
    return name + " = " + value + std::string(veltext::guardOf(value));
}

} // namespace velEditor
