// Decimal numbers as text, independent of the locale.
#pragma once

#include <charconv>
#include <string_view>

/// Blanks, an optional sign, digits to the very end. False, and `number`
/// untouched, for anything else and for a number out of range.
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
