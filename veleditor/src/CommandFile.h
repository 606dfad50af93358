// Writes the command data to its file.
//
// There must always be a complete copy of the user's data on the disk. So the loaded
// file is moved aside before anything is written. If it cannot be moved, or the
// target still exists, a spare copy is made first. An incomplete file never replaces
// a complete one. Only regular files are moved, never devices.
#pragma once

#include <optional>
#include <string>

namespace velEditor {

enum class SaveOutcome {
    Written,   ///< all data is on the disk
    NotOpened, ///< the target could not be opened
    Failed,    ///< not all data could be written
    Unchanged, ///< like Failed, and the target has not changed
};

struct SaveResult
{
    SaveOutcome outcome;
    std::string reason; ///< why it failed, for the user, in bytes

    /// The file with the former data, if that is no longer in the target; else
    /// empty.
    std::string backup;

    /// The file with the new data, if that is not in the target; otherwise empty.
    std::string newData;

    /// The bytes that were written, if all were.
    std::string written = {};
};

/// What `writeCommandFile` writes, and what becomes of the file before.
struct SaveContent
{
    /// The bytes; nothing for the whole command data, wrapped to 79 columns.
    std::optional<std::string> text = {};

    /// The backup stays as it is: the file that is replaced is not worth keeping.
    bool keepsBackup = false;
};

/// Moves the file `loaded` to `target`.bak, replacing an older backup, and writes the
/// content to `target`. The result of the move is not checked, because there may be
/// nothing to move.
[[nodiscard]] SaveResult writeCommandFile(const std::string &loaded, const std::string &target,
                                          const SaveContent &content = {});

} // namespace velEditor
