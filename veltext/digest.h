// A short text that tells two contents apart.
#pragma once

#include <string>
#include <string_view>

namespace veltext {

/// The MD5 of the bytes, in 32 hexadecimal digits. It detects accidents, not attacks.
[[nodiscard]] std::string digestOf(std::string_view bytes);

} // namespace veltext
