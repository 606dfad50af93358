// The command data in a def or res file, which is one dataset of lines.
#pragma once

#include "tools/veltool/ds/dsContainer.h"

#include <optional>
#include <string>
#include <string_view>

namespace veltool {

/// The longest line that the dataset can hold.
inline constexpr std::size_t commandLineLength = IO_STRING_LENGTH;

/// The largest WHEN of the command data of an open file; nothing without command
/// data. If there are more than twenty, only WHEN 0 is used, as in the editor.
[[nodiscard]] std::optional<std::int32_t> findCommandData(Container &container);

/// The lines of the command data of a file, each with a line feed. The library's
/// messages go to `routine`. Throws a ContainerFailure.
[[nodiscard]] std::string readCommandData(const ReadableFile &file,
                                          io_error_routine routine = reportMessage);

/// Replaces the command data of a file by lines of at most commandLineLength
/// characters. At every moment the file has the former lines or the new ones.
void writeCommandData(const std::string &file, std::string_view lines);

} // namespace veltool
