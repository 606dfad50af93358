// Searches the rows of the command tree for a text.
#pragma once

#include <QString>

namespace velEditor {

class VELTreeItem;

/// Whether `text` contains `pattern`, regardless of case, by one scan that reads each
/// character once. So a pattern of fewer than two characters never matches, and "aab"
/// does not match "ab", because the character that ends a partial match cannot begin
/// another one. Users rely on this.
[[nodiscard]] bool textMatches(QStringView text, QStringView pattern);

/// The row after `item` when all branches, open or closed, are read from top to
/// bottom; null after the last row.
[[nodiscard]] VELTreeItem *rowAfter(VELTreeItem &item);

/// The first row from `start` on, `start` included, whose label or value matches. Null
/// if there is none or `start` is null.
[[nodiscard]] VELTreeItem *findRow(VELTreeItem *start, const QString &pattern);

} // namespace velEditor
