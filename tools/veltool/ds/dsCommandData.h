// Command data inside def and res files: one dataset of lines.
#pragma once

#include "tools/veltool/ds/dsContainer.h"

#include <optional>
#include <string>
#include <string_view>

namespace veltool {

/// The longest line that the dataset holds.
inline constexpr std::size_t commandLineLength = IO_STRING_LENGTH;

/// The WHEN of the command data of an open file, which is the largest that
/// there is; none without command data. Of more than twenty only the one at
/// WHEN 0 counts, as for the editor.
[[nodiscard]] std::optional<std::int32_t> findCommandData(Container &container);

/// The lines of a file's command data, each with a line feed. Throws a
/// ContainerFailure; the library's messages go to `routine`.
[[nodiscard]] std::string readCommandData(const ReadableFile &file,
                                          io_error_routine routine = reportMessage);

/// Puts lines of at most commandLineLength characters in the place of a file's
/// command data. At every moment the file holds the former ones or the new.
void writeCommandData(const std::string &file, std::string_view lines);

} // namespace veltool
