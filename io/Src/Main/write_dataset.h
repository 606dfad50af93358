// Appending datasets to a container.
#pragma once

#include "io/Src/Main/data_io.h"
#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/open_file.h"

/// A dataset that is being written. No reader sees it until end_dataset() has written its
/// length.
struct pending_dataset
{
    format_code format;
    dataset_header header;
    std::int64_t position = 0; ///< of the format code
    std::int64_t start = 0;    ///< of "*DATASET"
    std::int64_t length = 0;   ///< set by end_dataset()
};

/// Completes a header that will be written: the requested format or the default, the parsed
/// type, the block factor as it is written. Everything that can be refused without a change
/// of the file is refused here.
[[nodiscard]] int prepare_dataset(open_file &file, std::string_view asked_format,
                                  dataset_header header, pending_dataset &pending,
                                  data_shape &shape);

/// Starts a dataset at the index position: format code and a length of zero
/// in one write, then tag and header, then the data tag.
[[nodiscard]] int begin_dataset(open_file &file, pending_dataset &pending);

/// End tag, lengths, "*CRASH", index line.
[[nodiscard]] int end_dataset(open_file &file, pending_dataset &pending);

/// Puts "*CRASH" where the dataset began; returns `code`.
[[nodiscard]] int abort_dataset(open_file &file, const pending_dataset &pending, int code);

/// Does all of this. setfilebusyflag() has made the file writable. `written` may be null.
[[nodiscard]] int write_dataset(open_file &file, std::string_view asked_format,
                                const dataset_header &header, const IO_data &data,
                                pending_dataset *written = nullptr);
