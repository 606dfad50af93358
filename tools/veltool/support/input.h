// Reads a file that may be standard input.
#pragma once

#include <string>

namespace veltool {

/// The file name that means standard input.
inline constexpr const char *standardInput = "-";

/// All bytes of a file, or of standard input for "-". Throws a veltext::Error.
[[nodiscard]] std::string readInput(const std::string &file);

/// Throws a Failure for "-": standard input cannot be edited in place.
void requireEditable(const std::string &file);

} // namespace veltool
