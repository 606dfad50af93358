// Writing the command data to its file.
//
// The user's data must never be without a complete copy on the disk. The file
// that was loaded is moved aside before anything is written. Where it cannot be
// moved, or the target exists anyway, a spare copy comes first. A file that did
// not become complete never takes the place of a complete one. A device is
// never moved: only regular files are.
#pragma once

#include <string>

namespace velEditor {

enum class SaveOutcome {
    Written,   ///< all of it has arrived on the disk
    NotOpened, ///< the target could not be opened
    Failed,    ///< the data could not be written to its end
    Unchanged, ///< the same, and the target is as it was before
};

struct SaveResult
{
    SaveOutcome outcome;
    std::string reason; ///< of a failure, for the user; in bytes

    /// The file that holds the data as it was before, where that is no longer
    /// in its own place; else empty.
    std::string backup;

    /// The file that holds the new data, which the target does not; else empty.
    std::string newData;
};

/// Moves the file `loaded` to `target`.bak, in place of an older one, and
/// writes the whole command data to `target`, wrapped to 79 columns. Whether
/// the move succeeds is not looked at: there may be nothing to move.
[[nodiscard]] SaveResult writeCommandFile(const std::string &loaded, const std::string &target);

} // namespace velEditor
