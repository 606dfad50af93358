#include "veleditor/src/ValueText.h"

#include <QCoreApplication>

#include <algorithm>

namespace velEditor {

namespace {

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < 32 && c != '\t';
}

/// A '#' begins a remark unless a back-slash stands directly before it.
bool holdsRemark(std::string_view value)
{
    for (std::size_t i = value.find('#'); i != std::string_view::npos; i = value.find('#', i + 1)) {
        if (i == 0 || value[i - 1] != '\\')
            return true;
    }
    return false;
}

bool endsInBackslash(std::string_view value)
{
    const std::size_t last = value.find_last_not_of(" \t");
    return last != std::string_view::npos && value[last] == '\\';
}

QString sentence(const char *text)
{
    return QCoreApplication::translate("velEditor::ValueText", text);
}

} // namespace

QString whyFileCannotHold(std::string_view value)
{
    if (std::any_of(value.begin(), value.end(), isControl))
        return sentence("A value cannot hold control characters.\n"
                        "Please correct the value before continuing.");
    if (holdsRemark(value))
        return sentence("A value cannot hold the character \"#\": it begins a remark in a "
                        "command file.\nPlease correct the value before continuing.");
    if (endsInBackslash(value))
        return sentence("A value cannot end in a back-slash: it continues a line in a command "
                        "file.\nPlease correct the value before continuing.");
    return QString();
}

} // namespace velEditor
