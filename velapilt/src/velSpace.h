// What white space is in command files, and how it is trimmed.
//
// Every reader of VEL text uses these, so that all of them see the same text.
// They do not depend on the locale.
#pragma once

#include "velapilt/src/velBytes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The six white-space characters of the C locale.
[[nodiscard]] constexpr bool velIsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The text without the white space at its end. The result is a part of `text`.
[[nodiscard]] inline std::string_view velTrimEnd(std::string_view text)
{
    while (!text.empty() && velIsSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// The text without the white space at its start and end. The result is a part of
/// `text`. If all of it is white space, the result is the empty end of `text`.
[[nodiscard]] inline std::string_view velTrim(std::string_view text)
{
    const char *start = text.data();
    const char *end = start + text.size();
    constexpr std::uint64_t blanks = 0x2020202020202020U; // an indentation, eight spaces at a time
    while (end - start >= 8 && velLoadBytes(start, 8) == blanks) {
        start += 8;
    }
    while (start < end && velIsSpace(*start)) {
        ++start;
    }
    while (end > start && velIsSpace(end[-1])) {
        --end;
    }
    return {start, static_cast<std::size_t>(end - start)};
}
