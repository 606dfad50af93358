// Writes all bytes to a descriptor.
#pragma once

#include <string_view>

namespace veltext {

/// Writes all of `text`. Returns 0, or the error number if a write failed.
[[nodiscard]] int writeAll(int descriptor, std::string_view text);

} // namespace veltext
