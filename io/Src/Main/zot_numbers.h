// Arrays of numbers, as text or binary. The conventions are those of
// zot_primitives.h.
#pragma once

#include "io/Src/Main/zot_primitives.h"

/// Integers: 8 in a line of text, each 10 wide, or 4 bytes each. Here and below, writers
/// return 4 or 11 without a message, and readers return 10 with a message.
[[nodiscard]] int zotwriteIntr(zot_io &io, format_code format, const std::int32_t *values,
                               std::int64_t count);
[[nodiscard]] int zotreadIntr(zot_io &io, format_code format, std::int32_t *values,
                              std::int64_t count);

/// Reals: 4 in a line of text, each 20 wide, or 4 bytes each.
[[nodiscard]] int zotwriteReal(zot_io &io, format_code format, const float *values,
                               std::int64_t count);
[[nodiscard]] int zotreadReal(zot_io &io, format_code format, float *values, std::int64_t count);

/// Doubles: in text the same as reals, also with as few digits; or 8 bytes each.
[[nodiscard]] int zotwriteDble(zot_io &io, format_code format, const double *values,
                               std::int64_t count);
[[nodiscard]] int zotreadDble(zot_io &io, format_code format, double *values, std::int64_t count);

/// A logical is a byte, 0 or 1; any other byte of a file reads as 1.
[[nodiscard]] int zotwriteLogl(zot_io &io, format_code format, const std::uint8_t *values,
                               std::int64_t count);
[[nodiscard]] int zotreadLogl(zot_io &io, format_code format, std::uint8_t *values,
                              std::int64_t count);

/// Single numbers in the text form: appends "%10d" and "%20.11E".
void zotappendIntr(std::string &line, std::int32_t value);
void zotappendReal(std::string &line, double value);

/// The number in a field, which may have spaces around it; false if there is no number.
bool zotparseIntr(std::string_view field, std::int32_t &value);
/// Whether a double is a REAL after rounding; infinities and NaN are.
bool zotfitsReal(double value);

/// A real number outside of the range of the type is not a number.
bool zotparseReal(std::string_view field, float &value);
bool zotparseReal(std::string_view field, double &value);
bool zotparseLogl(std::string_view field, std::uint8_t &value);

/// Reads the integers of a line with fields of 10 characters, or of 11 for a minus and ten
/// digits. If the line can be split in several ways, the first way that uses the whole line
/// counts; narrow fields are tried first. False if there is no way, or if there are more than
/// `room` values.
bool zotsplitIntr(std::string_view line, std::int32_t *values, std::size_t room,
                  std::size_t &count);
