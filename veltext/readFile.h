// Reading all bytes of a file.
#pragma once

#include <string>

namespace veltext {

/// All bytes of a file of any kind. Throws an Error that names the file.
[[nodiscard]] std::string readBytes(const std::string &file);

/// All bytes that an open descriptor still gives; it stays open. Throws an Error
/// that calls it `name`.
[[nodiscard]] std::string readBytes(int descriptor, const std::string &name);

} // namespace veltext
