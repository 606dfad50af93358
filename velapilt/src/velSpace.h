// White space as the parser of command files knows it, and trimming.
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

/// A text without the white space after it; a part of the text given.
[[nodiscard]] inline std::string_view velTrimEnd(std::string_view text)
{
    while (!text.empty() && velIsSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// A text between the white space around it; a part of the text given, with its
/// end if all of it is white space.
[[nodiscard]] inline std::string_view velTrim(std::string_view text)
{
    const char *start = text.data();
    const char *end = start + text.size();
    constexpr std::uint64_t blanks = 0x2020202020202020U; // an indentation, eight at a time
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
