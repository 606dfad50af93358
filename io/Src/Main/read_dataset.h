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
    std::int64_t data_end = 0; ///< where "*ENDDATASET" must be
    dataset_header header;
};

/// Reads from the format code up to and with the data tag.
[[nodiscard]] int read_located_dataset_start(open_file &file, std::int64_t position,
                                             located_start &start);

/// What a read needs, known before memory is allocated for it.
struct reading_plan
{
    data_shape stored;
    data_type wanted; ///< of the values that the client gets

    /// Values for which the client's arrays need space.
    element_counts counts() const { return total_counts(wanted, stored.count); }
};

/// Plans to read the data at the stream's position, which is start.data, as the
/// type `asked` (empty: the stored one). A code means that it cannot be read; 14
/// then is that of a bad type, not a question for room.
[[nodiscard]] int plan_reading(open_file &file, const located_start &start, std::string_view asked,
                               reading_plan &plan);

/// Reads the planned data into the client's arrays. 14 without a message if an array is
/// missing or too small: its size is set, and the stream does not move. After a failure the
/// arrays contain no data.
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
