// The content of the command tree as text, for comparisons in tests.
#pragma once

#include <QString>

namespace velEditor {

class VELTree;

/// One line for each row, closed branches included, indented by two blanks per level:
/// the label, for a parameter " = " and the value, then "*" if it can be edited and
/// "!" if it is in the expert section.
[[nodiscard]] QString treeText(const VELTree &tree);

} // namespace velEditor
