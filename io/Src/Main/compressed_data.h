// Compressed arrays in datasets.
#pragma once

#include "io/Src/Main/data_type.h"
#include "io/Src/Main/zot_primitives.h"

/// Whether an array is to be compressed: a binary code with a digit, 100
/// elements or more, neither STRI nor a structure. 23 with a message for the
/// level 0.
[[nodiscard]] int compression_wanted(const io_reporter &report, format_code format,
                                     const data_type &type, std::int32_t count, bool &wanted);

/// For requests that accept only compressed data: 30 for an array that is not to be
/// compressed, with a message if its format is not a compressed binary one; 23
/// for the level 0.
[[nodiscard]] int check_compressed(const io_reporter &report, format_code format,
                                   const data_type &type, std::int32_t count);

/// Compresses the array and writes its length and the stream. 11 if they cannot
/// be written, for any reason. 23 if the data does not compress: then −1 was written
/// as the length, and the caller must write the data as it is.
[[nodiscard]] int write_compressed_dataarray(zot_io &io, format_code format, element_type type,
                                             const void *data, std::int32_t count);

/// Reads an array of which compression_wanted() is true: one stream, or blocks
/// of `blockfactor` elements. The data area ends at `data_end` in the file. With
/// null for `data` it only checks whether the array can be read.
[[nodiscard]] int read_compressed_dataarray(zot_io &io, format_code format, element_type type,
                                            void *data, std::int32_t count,
                                            std::int32_t blockfactor, std::int64_t data_end);
