// The folder that a file is in.
#pragma once

#include <string>

namespace veltext {

/// Its path; "." for a bare name.
[[nodiscard]] std::string folderOf(const std::string &file);

/// Flushes the names in the folder of a file to the disk, if the file system can
/// do that. Without it, a power failure may lose a new or renamed file.
void flushFolderOf(const std::string &file);

} // namespace veltext
