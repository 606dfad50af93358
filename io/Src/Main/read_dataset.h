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
    std::int64_t data = 0;     ///< after the data tag; where the stream is
    std::int64_t data_end = 0; ///< where "*ENDDATASET" has to be
    dataset_header header;
};

/// Reads from the format code up to and with the data tag.
[[nodiscard]] int read_located_dataset_start(open_file &file, std::int64_t position,
                                             located_start &start);

/// What a reading takes, known before memory is allocated for it.
struct reading_plan
{
    data_shape stored;
    data_type wanted; ///< of the values that the client gets

    /// Values that the client's arrays have to hold.
    element_counts counts() const { return total_counts(wanted, stored.count); }
};

/// Plans to read the data at the stream's position, which is start.data, as the
/// type `asked` (empty: the stored one). A code means that it cannot be read; 14
/// then is that of a bad type, not a question for room.
[[nodiscard]] int plan_reading(open_file &file, const located_start &start, std::string_view asked,
                               reading_plan &plan);

/// Reads what was planned into the client's arrays. 14 without a message if one
/// is missing or too small: its size is set, and the stream is where it was. A
/// failure leaves no data in the arrays.
[[nodiscard]] int read_planned(open_file &file, const located_start &start,
                               const reading_plan &plan, IO_data &data);

/// Both.
[[nodiscard]] int read_data_as(open_file &file, const located_start &start, std::string_view asked,
                               IO_data &data);

/// The same for the dataset at `position`.
[[nodiscard]] int read_located_dataset_as(open_file &file, std::int64_t position,
                                          std::string_view asked, IO_data &data,
                                          located_start &start);

/// What the header says about the data; 12 or 14 for a type string that is wrong.
/// The block factor is 100000 where the dataset has none.
[[nodiscard]] int describe_data(const open_file &file, const located_start &start,
                                data_shape &shape);

/// The end tag, at the stream's position.
[[nodiscard]] int read_end_tag(open_file &file, format_code format);
