// Reads a text line by line, without copying it.
#pragma once

#include <algorithm>
#include <string_view>

namespace velEditor {

/// Removes the first line from `text` and returns it without its line feed. The
/// text after the last line feed is a line too, unless it is empty. Call this
/// until `text` is empty.
[[nodiscard]] constexpr std::string_view takeLine(std::string_view *text)
{
    const std::string_view line = text->substr(0, text->find('\n'));
    text->remove_prefix(std::min(line.size() + 1, text->size()));
    return line;
}

} // namespace velEditor
