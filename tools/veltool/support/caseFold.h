// Changes letters to small letters, for comparisons without regard to case.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// The text with small letters only, in any script. Invalid UTF-8 bytes stay as
/// they are. Does not depend on the locale of the process.
[[nodiscard]] std::string foldCase(std::string_view text);

} // namespace veltool
