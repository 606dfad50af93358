// Arrays of numbers, as text or binary. The conventions are those of
// zot_primitives.h.
#pragma once

#include "io/Src/Main/zot_primitives.h"

/// Integers: 8 in a line of text, each 10 wide, or 4 bytes each. Here as below writers
/// give 4 or 11 without a message, and readers 10 with one.
[[nodiscard]] int zotwriteIntr(zot_io &io, format_code format, const std::int32_t *values,
                               std::int64_t count);
[[nodiscard]] int zotreadIntr(zot_io &io, format_code format, std::int32_t *values,
                              std::int64_t count);

/// Reals: 4 in a line of text, each 20 wide, or 4 bytes each.
[[nodiscard]] int zotwriteReal(zot_io &io, format_code format, const float *values,
                               std::int64_t count);
[[nodiscard]] int zotreadReal(zot_io &io, format_code format, float *values, std::int64_t count);

/// Doubles: as reals in text, with no more digits, or 8 bytes each.
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

/// The number that a field holds, blanks around it allowed; false if it holds none.
bool zotparseIntr(std::string_view field, std::int32_t &value);
/// Whether a double is a REAL after rounding; infinities and NaN are.
bool zotfitsReal(double value);

/// A real number beyond the range of the type is none.
bool zotparseReal(std::string_view field, float &value);
bool zotparseReal(std::string_view field, double &value);
bool zotparseLogl(std::string_view field, std::uint8_t &value);

/// Takes the integers off a line of fields that are 10 characters wide, or 11
/// where there are a minus and ten digits. Of several ways to split the line the
/// first that uses it up is taken, narrow fields tried first. False if there is
/// none, or if there are more than `room` values.
bool zotsplitIntr(std::string_view line, std::int32_t *values, std::size_t room,
                  std::size_t &count);
