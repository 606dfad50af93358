// The data of a dataset, between its data tag and its end tag.
#pragma once

#include "io/Src/Main/element_arrays.h"
#include "io/Src/Main/zot_primitives.h"

/// What there is to know of the data, taken from the header.
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

/// Whether the file can hold what the header claims, from the stream's position
/// to the end of the file: 10, or 23 for compressed data. Call it before any
/// memory is allocated and before any size is given to the client.
[[nodiscard]] int check_data_claim(zot_io &io, const data_shape &shape);

/// Reads the data and forgets it, in memory that does not grow with it.
[[nodiscard]] int skim_data(zot_io &io, const data_shape &shape);

/// Reads into arrays that hold enough. After a failure they hold nothing but
/// zero bytes.
[[nodiscard]] int read_data(zot_io &io, const data_shape &shape, IO_data &data);
