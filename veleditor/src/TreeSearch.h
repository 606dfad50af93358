// Searching the rows of the command tree for a text.
#pragma once

#include <QString>

namespace velEditor {

class VELTreeItem;

/// Whether `text` holds `pattern`, upper and lower case alike, by one scan that
/// never looks at a character twice. Kept with what follows from that: a
/// pattern of one character or none never matches, and "aab" does not match
/// "ab", since the character that ends a partial match cannot begin another.
[[nodiscard]] bool textMatches(QStringView text, QStringView pattern);

/// The row behind `item` when all branches are read from top to bottom, open
/// or not; null behind the last.
[[nodiscard]] VELTreeItem *rowBehind(VELTreeItem &item);

/// The first row from `start` on, itself included, whose label or value
/// matches; null when there is none, or no start.
[[nodiscard]] VELTreeItem *findRow(VELTreeItem *start, const QString &pattern);

} // namespace velEditor
