// One look at a line: what in it needs more than the plain way.
#pragma once

#include <cstddef>
#include <string_view>

struct velLineTraits
{
    bool isPlain;       ///< no '#', no control character, no white space but single blanks
    std::size_t equals; ///< the place of the first '=', npos without one
};

[[nodiscard]] velLineTraits velScanLine(std::string_view line);
/// The same, a character at a time: what the other is tested against.
[[nodiscard]] velLineTraits velScanLineSlowly(std::string_view line);

/// How many line feeds a text has.
[[nodiscard]] std::size_t velCountLineFeeds(std::string_view text);
