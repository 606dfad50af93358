// Functions that read all bytes of a file.
#pragma once

#include <string>

namespace veltext {

/// All bytes of a file of any kind. Throws an Error that names the file.
[[nodiscard]] std::string readBytes(const std::string &file);

/// All bytes from the current position of an open descriptor, which stays open.
/// Messages of an Error call it `name`.
[[nodiscard]] std::string readBytes(int descriptor, const std::string &name);

} // namespace veltext
