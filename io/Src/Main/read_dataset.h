// Reading a dataset that the index has located.
#pragma once

#include "io/Src/Main/data_io.h"
#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/open_file.h"

/// A live dataset whose header has been read.
struct located_start
{
    format_code format;
    std::int64_t position = 0;
    std::int64_t length = 0;
    std::int64_t start = 0;    ///< of "*DATASET"
    std::int64_t data = 0;     ///< behind the data tag; where the stream stands
    std::int64_t data_end = 0; ///< where "*ENDDATASET" has to stand
    dataset_header header;
};

/// Reads from the format code up to and with the data tag.
int read_located_dataset_start(open_file &file, std::int64_t position, located_start &start);

/// Reads the data at the stream's position, which is start.data, into the
/// client's arrays, as the type `asked` (empty: the stored one). Sets the sizes
/// of all arrays that the type needs; 14 if one was too small, and then the
/// stream is where it was. A failure leaves no data in the arrays.
int read_data_as(open_file &file, const located_start &start, std::string_view asked,
                 IO_data &data);

/// Both, for the dataset at `position`.
int read_located_dataset_as(open_file &file, std::int64_t position, std::string_view asked,
                            IO_data &data, located_start &start);

/// What the header says of the data; 12 or 14 for a type string that is none.
int describe_data(const open_file &file, const located_start &start, data_shape &shape);

/// The end tag, at the stream's position.
int read_end_tag(open_file &file, format_code format);
