// Numbers as values hold them, the same under every locale.
#pragma once

#include <cstdint>
#include <string_view>

/// The decimal number at the start of `text`: white space, sign, digits,
/// point, exponent; no hexadecimal, no infinities. Reading stops at the first
/// character that cannot continue it; 0 where there is none.
[[nodiscard]] double velReadNumber(std::string_view text);

/// Rounded half away from zero; clamped to 32 bits.
[[nodiscard]] std::int32_t velRoundValue(double number);

/// number + 0.5 truncated toward zero, for every sign; clamped to 32 bits.
/// Lists and logicals round like this, so −1.7 is −1 there: kept.
[[nodiscard]] std::int32_t velRoundElement(double number);
