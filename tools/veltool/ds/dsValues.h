// The data of a dataset as lines of text, both ways.
//
// One element a line: INTR "%d", REAL "%.9g", DBLE "%.17g" (so that the same
// bits come back), LOGL 1 or 0, STRI without trailing blanks. CHAR stands all on
// one line. A structure is a record a line, with a tab between its values; the
// characters of one entry stand together.
#pragma once

#include "io/Src/Main/element_arrays.h"

#include <string_view>

namespace veltool {

/// Prints `count` elements; throws a Failure when output falls short.
void printValues(const data_type &type, std::int32_t count, const IO_data &data);

/// The elements of a text: its lines, or its characters.
[[nodiscard]] std::int32_t countElements(const data_type &type, std::string_view text);

/// Fills arrays that have room for countElements(). Throws a ContainerFailure
/// that names the line: 10 for what is no such value or one too many, 14 for
/// a string too long, 18 for a record too short.
void parseValues(const data_type &type, std::string_view text, IO_data &data);

} // namespace veltool
