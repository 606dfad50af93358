// Where the programs keep what they remember for a user between two runs.
//
//     $XDG_STATE_HOME/veleditor/KIND/NAME of the file/
//
// Only the user can read these folders (mode 0700) and the files in them (0600):
// they hold copies of files whose own permissions may be stricter than usual.
#pragma once

#include <string>

namespace veltext {

/// The folder for one kind of state ("history"). It is not made. Empty if the
/// environment names no place.
[[nodiscard]] std::string stateFolder(const std::string &kind);

/// The one absolute path of a file, links followed, whichever way it is named.
/// The file need not exist.
[[nodiscard]] std::string canonicalPath(const std::string &file);

/// What the folder of a file is called in a state folder: the file's name, for
/// people, and a number made from its whole path. `path` is a canonical one.
[[nodiscard]] std::string stateNameOf(const std::string &path);

/// Makes a folder, with those that it is in, for the user alone; one that exists
/// becomes the user's alone. Throws an Error.
void makePrivateFolder(const std::string &folder);

} // namespace veltext
