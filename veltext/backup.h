// The backup: the former file under a second name while a new file replaces it.
//
// A backup replaces an older backup in one step. At every moment at least one
// of the two names leads to the complete former file.
#pragma once

#include <string>

namespace veltext {

/// FILE.bak
[[nodiscard]] std::string backupNameOf(const std::string &file);

/// What happens to the file's own name.
enum class Backup {
    Move, ///< the file is renamed and loses its name
    Both, ///< the file keeps its name; where it cannot have two, the backup is a copy
};

/// Keeps the contents of `file` under the name `backup`, replacing an older
/// backup. True if the backup exists now.
///
/// With Move, false if the file is still in its place: it is a device, a pipe or
/// one of the links in /dev; or `backup` cannot be replaced; or the link `file`
/// leads to `backup`. A file that an earlier call has moved counts as moved.
///
/// With Both, links are not followed: pass the file that a link leads to. Throws
/// an Error that names the backup if it cannot be made.
bool makeBackup(const std::string &file, const std::string &backup, Backup way);

/// Whether both names lead to the same file; false if one leads to no file.
[[nodiscard]] bool isSameFile(const std::string &one, const std::string &other);

} // namespace veltext
