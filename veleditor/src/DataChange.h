// Makes the data of a document equal to that of another text, as one undoable step.
//
// Only what differs is edited, item by item, so that rows that stay keep their
// place, their open branches and the selection. Afterwards the items are in the order
// in which a fresh load of the text has them.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veleditor/src/Edit.h"

#include <QString>

#include <string>
#include <vector>

namespace veltext {
class CommandText;
} // namespace veltext

namespace velEditor {

class Document;
class UndoHistory;

/// How far edits go into what differs.
enum class EditDetail {
    Items,   ///< to each parameter and object
    Objects, ///< no further than to objects at the top, which are replaced as a whole
};

/// The complete edits that lead from the data to that of a text when they are applied in
/// this order; none if both are the same. An item that is at another place among its
/// siblings is deleted and added again. Library data stays.
[[nodiscard]] std::vector<Edit> editsTowards(const CommandData &data,
                                             const veltext::CommandText &wanted,
                                             EditDetail detail = EditDetail::Items);

/// Makes these edits as one step of this name and validates the data. A text that is
/// refused changes nothing. Returns why, with the line, or the message of the edit
/// that failed; the edits before it are a step that can be undone.
[[nodiscard]] Message changeTo(Document &document, UndoHistory &history, const std::string &text,
                               const QString &name);

} // namespace velEditor
