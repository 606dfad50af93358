// The texts for values that are refused.
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
        return sentence("A value cannot contain control characters.\n"
                        "Please remove them.");
    case veltext::ValueFault::Comment:
        return sentence("A value cannot contain the character \"#\", which begins a comment in a "
                        "command file.\nPlease write \"\\#\" for the character itself.");
    case veltext::ValueFault::FinalBackslash:
        if (check.position + 1 == value.size()) {
            break; // saved with an empty comment after it
        }
        return sentence("A value cannot end in a backslash and spaces, because its line in the "
                        "command file would continue.\nPlease remove the spaces or the "
                        "backslash.");
    case veltext::ValueFault::WhiteSpace: // several blanks mean the same as one
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
