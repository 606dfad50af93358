// Reverts differences from a base, as one step that can be undone.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veltext/commandText.h"

#include <QString>

#include <vector>

namespace velEditor {

class BaseDifferences;
class Document;
class UndoHistory;

/// Reverts these differences, each with all below it, and validates the data. What does
/// not differ any more is left out. The step has the name "Revert Title" or "Revert 3
/// changes". Returns the message of the edit that failed; undo reverts the edits before
/// it.
[[nodiscard]] Message revert(Document &document, UndoHistory &history,
                             const BaseDifferences &differences,
                             const std::vector<veltext::Change> &chosen);

/// Reverts all differences that there are, in one step of this name.
[[nodiscard]] Message revertAll(Document &document, UndoHistory &history,
                                const BaseDifferences &differences, const QString &name);

} // namespace velEditor
