// Converts the data of a dataset to lines of text and back.
//
// One element per line: INTR "%d", REAL "%.9g", DBLE "%.17g" (which keeps every
// bit), LOGL 1 or 0, STRI without trailing blanks. All CHAR elements are on one
// line. A structure has one record per line, with a tab between the values; the
// characters of one entry have no tabs between them.
#pragma once

#include "io/Src/Main/element_arrays.h"

#include <string_view>

namespace veltool {

/// Prints `count` elements. Throws a Failure if the output cannot be written.
void printValues(const data_type &type, std::int32_t count, const IO_data &data);

/// The number of elements in a text: its lines, or for CHAR its characters.
[[nodiscard]] std::int32_t countElements(const data_type &type, std::string_view text);

/// Fills arrays with room for countElements() elements. Throws a ContainerFailure
/// that names the line: code 10 for a wrong value or too many values, 14 for a
/// string that is too long, 18 for too few values.
void parseValues(const data_type &type, std::string_view text, IO_data &data);

} // namespace veltool
