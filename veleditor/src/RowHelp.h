// Describes a row of the command tree by its rules, as text for the user. The rules
// are asked each time, because the requirements of an object may depend on the current
// values in it.
#pragma once

#include <QString>

namespace velEditor {

class VELTreeItem;

/// The tip of a row: the whole text of the column, which the screen may cut; whether
/// the parameter can be changed; its description, type, units and bounds. As rich
/// text, so that the toolkit wraps it.
[[nodiscard]] QString rowToolTip(const VELTreeItem &row, int column);

/// The same with all other fields of the rule.
[[nodiscard]] QString rowWhatsThis(const VELTreeItem &row);

/// The help topic that the rule names; empty if it names none.
[[nodiscard]] QString rowHelpTopic(const VELTreeItem &row);

} // namespace velEditor
