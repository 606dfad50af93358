// Converts data to the type that a client requests.
#pragma once

#include "io/Src/Main/element_arrays.h"

#include <string>

/// Whether convert_data() can convert. 27 with a message if the types differ in their number
/// of items or in an item's count, or if an item cannot be converted. INTR, REAL and DBLE
/// can be converted to each other, and so can LOGL and INTR, and strings of different
/// lengths.
[[nodiscard]] int check_conversion(const io_reporter &report, const std::string &from_text,
                                   const data_type &from, const std::string &to_text,
                                   const data_type &to);

/// Converts `count` elements of types that passed the check. 27 for a number
/// that does not fit an integer; 14 if `in` holds too little. `out` has been
/// sized for them.
[[nodiscard]] int convert_data(const io_reporter &report, const data_type &from, const IO_data &in,
                               const data_type &to, IO_data &out, std::int32_t count);
