#include "veleditor/src/ValueText.h"

#include "velparser/api/velValueText.h"

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
    switch (velparser::checkValueText(value).fault) {
    case velparser::ValueFault::ControlCharacter:
        return sentence("A value cannot hold control characters.\n"
                        "Please correct the value before continuing.");
    case velparser::ValueFault::Remark:
        return sentence("A value cannot hold the character \"#\": it begins a remark in a "
                        "command file.\nWrite \"\\#\" where you mean the character itself.");
    case velparser::ValueFault::FinalBackslash:
        return sentence("A value cannot end in a back-slash: it continues a line in a command "
                        "file.\nPlease correct the value before continuing.");
    case velparser::ValueFault::WhiteSpace: // several blanks mean what one does
    case velparser::ValueFault::None:
        break;
    }
    return QString();
}

} // namespace velEditor
