// Puts the changes of a journal into a text.
//
// The journal gives a version of its base. If the text is no longer that base, the
// two are merged by path (mergePlan.h). What the text and the journal changed in
// different ways keeps what the text has, and is reported.
#pragma once

#include "veltext/journal.h"

#include <optional>
#include <string>
#include <vector>

namespace veltext {

/// A path that the text and the journal changed in different ways.
struct RecoveryConflict
{
    std::string path;
    std::optional<std::string> kept; ///< the value in the text; nothing for an object or nothing
    std::optional<std::string> inJournal; ///< the same, in the journal
};

/// A text with the changes of a journal.
struct Recovery
{
    std::string bytes;       ///< lines that no change concerns are as in the text
    bool hasChanges = false; ///< the data of `bytes` is not that of the text
    bool isMerged = false;   ///< the text is not the journal's base
    std::vector<RecoveryConflict> conflicts;
    std::vector<std::string> faults; ///< of the journal, and changes that do not fit
};

/// Puts the changes of `journal` into `text`, the bytes of a command file; without a
/// text, into the journal's base. `name` is that of the file, for messages. Throws an
/// Error if the text or the base is not VEL, or if the base is damaged and the text is
/// not it.
[[nodiscard]] Recovery recover(const Journal &journal, const std::optional<std::string> &text,
                               const std::string &name);

} // namespace veltext
