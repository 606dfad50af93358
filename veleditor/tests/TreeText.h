// What the command tree shows, as text that a test can compare.
#pragma once

#include <QString>

namespace velEditor {

class VELTree;

/// A line for each row, closed branches included, two blanks a level: the
/// label, for a parameter " = " and the value, then "*" where it may be edited
/// and "!" where it is in the expert section.
[[nodiscard]] QString treeText(const VELTree &tree);

} // namespace velEditor
