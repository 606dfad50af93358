// Letters without their case, for comparisons.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// The text with small letters only, of any script. Bytes that are no UTF-8
/// stay as they are. Does not depend on the locale of the process.
[[nodiscard]] std::string foldCase(std::string_view text);

} // namespace veltool
