// Reads numbers without the locale, and rounds them to 32 bits.
#include "velapilt/src/velNumber.h"

#include "velapilt/src/velSpace.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether a number outside the range of double is too large, not too small. The
/// place of its first digit that is not 0, moved by its exponent, decides.
bool isTooLarge(std::string_view number)
{
    std::int64_t place = 0;
    bool beforePoint = true;
    bool counts = false;
    std::size_t i = 0;
    for (; i < number.size() && (isDigit(number[i]) || number[i] == '.'); ++i) {
        if (number[i] == '.') {
            beforePoint = false;
            continue;
        }
        counts = counts || number[i] != '0';
        if (beforePoint && counts) {
            ++place;
        } else if (!beforePoint && !counts) {
            --place;
        }
    }
    if (i + 1 >= number.size()) {
        return place > 0;
    }
    const bool isNegative = number[i + 1] == '-';
    number.remove_prefix(i + 1 + (isNegative || number[i + 1] == '+' ? 1 : 0));
    std::int64_t exponent = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), exponent);
    if (result.ec != std::errc()) {
        return !isNegative; // an exponent beyond 64 bits decides alone
    }
    return place + (isNegative ? -exponent : exponent) > 0;
}

std::int32_t clampToInt(double number)
{
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    if (number <= lowest) {
        return std::numeric_limits<std::int32_t>::min();
    }
    if (number >= highest) {
        return std::numeric_limits<std::int32_t>::max();
    }
    return static_cast<std::int32_t>(number);
}

} // namespace

double velReadNumber(std::string_view text)
{
    while (!text.empty() && velIsSpace(text.front())) {
        text.remove_prefix(1);
    }
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    if (text.empty() || !(isDigit(text[0]) || text[0] == '.')) {
        return 0; // this also refuses "inf", "nan" and a second sign
    }
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        const auto length = static_cast<std::size_t>(result.ptr - text.data());
        number = isTooLarge(text.substr(0, length)) ? HUGE_VAL : 0;
    }
    return isNegative ? -number : number;
}

std::int32_t velRoundValue(double number)
{
    return clampToInt(number < 0 ? number - 0.5 : number + 0.5);
}

std::int32_t velRoundElement(double number)
{
    return clampToInt(number + 0.5);
}
