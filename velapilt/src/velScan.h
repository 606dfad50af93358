// Reads a line once, to find where it ends and whether the fast way of parsing is enough.
#pragma once

#include <cstddef>
#include <string_view>

/// A line of a text.
struct velScannedLine
{
    std::string_view
        text;           ///< of a plain line without the spaces around it; otherwise the whole line
    const char *next;   ///< the line after it
    std::size_t equals; ///< the place of the first '=' in a plain line, npos without one
    bool isPlain;       ///< no '#', no control character, no white space except single spaces
};

/// The bytes that must follow a scanned text: a line feed, then any bytes.
inline constexpr std::size_t velScanSlack = 16;

/// The line that starts at `start`, in a text that ends at `end`.
[[nodiscard]] velScannedLine velScanLine(const char *start, const char *end);

/// The same for a text without these bytes, one character at a time.
[[nodiscard]] velScannedLine velScanLineSlowly(std::string_view line);

/// How many line feeds a text has.
[[nodiscard]] std::size_t velCountLineFeeds(std::string_view text);
