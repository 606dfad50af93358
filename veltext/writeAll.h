// Writing every byte to a descriptor.
#pragma once

#include <string_view>

namespace veltext {

/// Writes all of `text`. Gives 0, or the error number of what fell short.
[[nodiscard]] int writeAll(int descriptor, std::string_view text);

} // namespace veltext
