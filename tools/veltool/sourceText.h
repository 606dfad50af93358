// The bytes of a command file, from a file or standard input.
#pragma once

#include "veltext/sourceText.h"

namespace veltool {

using veltext::SourceText;

/// The name under which standard input is read.
inline constexpr const char *standardInput = "-";

/// All bytes of a file, or of standard input for "-". Throws a Failure.
[[nodiscard]] std::string readBytes(const std::string &file);

} // namespace veltool
