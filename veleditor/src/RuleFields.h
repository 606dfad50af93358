// The fields of the rule for an object or a parameter, as texts in the form of a rule
// library.
#pragma once

#include <QString>

#include <string>
#include <vector>

namespace velEditor {

/// A field and its text, such as "Units" and "kg s^-1".
struct RuleField
{
    QString name;
    QString text;
    bool inTip = false; ///< whether the tip of a row shows it
};

/// The fields for the item at a database path, which need not exist. Empty if there is
/// no rule or if the rules fail.
[[nodiscard]] std::vector<RuleField> ruleFields(const std::string &path);

/// The text of one field; empty if the rule does not have it.
[[nodiscard]] QString ruleField(const std::string &path, QLatin1String name);

} // namespace velEditor
