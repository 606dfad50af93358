// Turning data of one type into another that a client asks for.
#pragma once

#include "io/Src/Main/element_arrays.h"

#include <string>

/// Whether convert_data() can: 27 with a message if the types differ in their
/// number of items, in an item's count, or in a way that no number bridges.
/// INTR, REAL and DBLE go into each other, LOGL and INTR too; strings into
/// strings of another length.
[[nodiscard]] int check_conversion(const io_reporter &report, const std::string &from_text,
                                   const data_type &from, const std::string &to_text,
                                   const data_type &to);

/// Converts `count` elements of types that passed the check. 27 for a number
/// that does not fit an integer; 14 if `in` holds too little. `out` has been
/// sized for them.
[[nodiscard]] int convert_data(const io_reporter &report, const data_type &from, const IO_data &in,
                               const data_type &to, IO_data &out, std::int32_t count);
