#include "veleditor/src/RuleFields.h"

#include "veleditor/src/Text.h"
#include "velparser/api/velparser.h"

namespace velEditor {

std::vector<RuleField> ruleFields(const std::string &path)
{
    velStringList lines;
    std::vector<RuleField> fields;
    if (velparser::explainItem(path.c_str(), &lines) != nullptr)
        return fields;
    for (const char *line : lines) {
        const QString text = fromBytes(line);
        const QLatin1String separator(" = ");
        const qsizetype end = text.indexOf(separator);
        if (end >= 0)
            fields.push_back({text.left(end), text.mid(end + separator.size())});
    }
    return fields;
}

QString ruleField(const std::string &path, QLatin1String name)
{
    for (const RuleField &field : ruleFields(path)) {
        if (field.name == name)
            return field.text;
    }
    return QString();
}

} // namespace velEditor
