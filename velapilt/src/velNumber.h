// Reads numbers in values; the locale does not matter.
#pragma once

#include <cstdint>
#include <string_view>

/// The decimal number at the start of `text`: white space, sign, digits,
/// point, exponent; no hexadecimal, no infinities. Reading stops at the first
/// character that cannot continue it. 0 if there is no number.
[[nodiscard]] double velReadNumber(std::string_view text);

/// Rounded half away from zero; clamped to 32 bits.
[[nodiscard]] std::int32_t velRoundValue(double number);

/// number + 0.5 truncated toward zero, for every sign; clamped to 32 bits. Lists and
/// logicals round in this way, so −1.7 becomes −1. Users rely on this.
[[nodiscard]] std::int32_t velRoundElement(double number);
