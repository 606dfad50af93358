// Asks the bridge for the fields of a rule and writes them as text.
#include "veleditor/src/RuleFields.h"

#include "veleditor/src/Text.h"
#include "velparser/api/velparser.h"

namespace velEditor {

std::vector<RuleField> ruleFields(const std::string &path)
{
    std::vector<velparser::RuleField> found;
    std::vector<RuleField> fields;
    if (velparser::explainItem(path.c_str(), &found) != nullptr) {
        return fields;
    }
    for (const velparser::RuleField &field : found) {
        fields.push_back({fromBytes(field.name), fromBytes(field.text), field.inTip});
    }
    return fields;
}

QString ruleField(const std::string &path, QLatin1String name)
{
    for (const RuleField &field : ruleFields(path)) {
        if (field.name == name) {
            return field.text;
        }
    }
    return QString();
}

} // namespace velEditor
