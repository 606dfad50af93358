// What the rules say of an object or a parameter, field by field, as a rule
// would write it.
#pragma once

#include <QString>

#include <string>
#include <vector>

namespace velEditor {

/// "Units" and "kg s^-1".
struct RuleField
{
    QString name;
    QString text;
    bool inTip = false; ///< the tip of a row shows it
};

/// The fields for the item at a database path, there or not; none where there is
/// no rule, or where the rules fail.
[[nodiscard]] std::vector<RuleField> ruleFields(const std::string &path);

/// The text of one field; empty where the rule does not have it.
[[nodiscard]] QString ruleField(const std::string &path, QLatin1String name);

} // namespace velEditor
