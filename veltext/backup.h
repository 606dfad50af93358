// The former file, kept under a second name while a new one takes its place.
//
// Both ways in which the programs keep it are here. Either replaces an older
// backup in one step, and at every moment one name has the whole of the file.
#pragma once

#include <string>

namespace veltext {

/// FILE.bak
[[nodiscard]] std::string backupNameOf(const std::string &file);

/// What becomes of the file's own name.
enum class Backup {
    Move, ///< it is given up: the file is renamed
    Both, ///< it stays; where a file cannot have two names, the backup is a copy
};

/// Gives what `file` holds the name `backup`, in place of an older one. True if
/// it has that name now.
///
/// With Move, false if the file is still where it was, for whatever reason: it
/// is a device, a pipe or one of the links in /dev, or the name is taken by what
/// cannot be replaced, or is where the link `file` leads. One that an earlier
/// call has moved counts as moved.
///
/// With Both, a link is not followed, so `file` is where links lead; throws an
/// Error that names the backup if it cannot be made.
bool makeBackup(const std::string &file, const std::string &backup, Backup way);

/// Whether both names lead to one file; false if either leads to none.
[[nodiscard]] bool isSameFile(const std::string &one, const std::string &other);

} // namespace veltext
