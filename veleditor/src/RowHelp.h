// What the rules say of a row of the command tree, in words for the user. The
// rules are asked when the words are wanted, so that they are those of the
// moment: what an object needs may hang on the values in it.
#pragma once

#include <QString>

namespace velEditor {

class VELTreeItem;

/// The whole text of a column, which the screen may have cut, whether and how
/// the parameter can be changed, its description, type, units and bounds. Rich
/// text, so that it is wrapped.
[[nodiscard]] QString rowToolTip(const VELTreeItem &row, int column);

/// The same with everything else that the rules say.
[[nodiscard]] QString rowWhatsThis(const VELTreeItem &row);

/// The help topic that the rule names; empty where it names none.
[[nodiscard]] QString rowHelpTopic(const VELTreeItem &row);

} // namespace velEditor
