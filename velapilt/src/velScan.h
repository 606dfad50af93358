// One look at a line: where it ends, and whether it needs more than the plain
// way.
#pragma once

#include <cstddef>
#include <string_view>

/// A line of a text.
struct velScannedLine
{
    std::string_view text; ///< without the blanks around it where the line is plain, else whole
    const char *next;      ///< the line after it
    std::size_t equals;    ///< the place of the first '=' in a plain line, npos without one
    bool isPlain;          ///< no '#', no control character, no white space but single blanks
};

/// What must follow a text that is scanned: a line feed, then anything.
inline constexpr std::size_t velScanSlack = 16;

/// The line that starts at `start`, in a text that ends at `end`.
[[nodiscard]] velScannedLine velScanLine(const char *start, const char *end);

/// The same for a text without slack and line end, a character at a time.
[[nodiscard]] velScannedLine velScanLineSlowly(std::string_view line);

/// How many line feeds a text has.
[[nodiscard]] std::size_t velCountLineFeeds(std::string_view text);
