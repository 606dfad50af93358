// The data of a dataset, between its data tag and its end tag.
#pragma once

#include "io/Src/Main/element_arrays.h"
#include "io/Src/Main/zot_primitives.h"

/// The properties of the data, from the header.
struct data_shape
{
    format_code format;
    data_type type;
    std::int32_t count = 0;
    std::int32_t blockfactor = 1;
    std::int64_t end = 0; ///< for reading: where in the file the data area ends
};

/// Writes the arrays. 14 with a message if they hold too little.
[[nodiscard]] int write_data(zot_io &io, const data_shape &shape, const IO_data &data);

/// Checks that the rest of the file, from the stream's position, is long enough for the data
/// that the header states. If not: 10, or 23 for compressed data. Call it before any memory
/// is allocated and before the client gets any size.
[[nodiscard]] int check_data_claim(zot_io &io, const data_shape &shape);

/// Reads the data and drops it. The memory that this needs does not depend on the size.
[[nodiscard]] int skim_data(zot_io &io, const data_shape &shape);

/// Reads into arrays, which must be large enough. After a failure they contain only zero
/// bytes.
[[nodiscard]] int read_data(zot_io &io, const data_shape &shape, IO_data &data);
