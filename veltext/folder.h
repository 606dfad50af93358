// The folder that a file is in.
#pragma once

#include <string>

namespace veltext {

/// Its path; "." for a bare name.
[[nodiscard]] std::string folderOf(const std::string &file);

/// Brings the names in the folder of a file to the disk, as far as the file
/// system does that. Without it, a new or renamed file may be lost with the
/// power.
void flushFolderOf(const std::string &file);

} // namespace veltext
