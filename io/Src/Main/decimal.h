// Decimal numbers as text, independent of the locale.
#pragma once

#include <charconv>
#include <string_view>

/// Reads spaces, an optional sign, and digits up to the end. For any other text, or a number
/// out of range, it returns false and does not change `number`.
template <typename Integer>
bool parse_decimal(std::string_view text, Integer &number)
{
    std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        return false;
    }
    const char *begin = text.data() + start;
    const char *end = text.data() + text.size();
    if (*begin == '+' && begin + 1 < end && begin[1] != '-') {
        begin++;
    }
    Integer value = 0;
    auto [stop, problem] = std::from_chars(begin, end, value);
    if (problem != std::errc() || stop != end) {
        return false;
    }
    number = value;
    return true;
}
