// Copying datasets from one container to the end of another. The target has
// been made writable by setfilebusyflag().
#pragma once

#include "io/Src/Main/open_file.h"

/// The name of a dataset in its container.
struct dataset_name
{
    std::string what;
    std::string where;
    std::int32_t when = 0;
};

/// Copies the dataset at `position`, under a new name unless `name` is null. It
/// keeps its format code, block factor and data bytes; the header is encoded
/// again. 15 for a position without a live dataset.
[[nodiscard]] int copy_dataset(open_file &from, std::int64_t position, open_file &to,
                               const dataset_name *name);

/// Copies every live dataset, in index order, then updates the target's index.
[[nodiscard]] int copy_all_ds(open_file &from, open_file &to);

/// Copies every live dataset whose WHEN is 0, in index order.
[[nodiscard]] int copy_when0_ds(open_file &from, open_file &to);

/// Copies the live datasets with that WHEN (negative: all), in index order;
/// arrays that are neither compressed nor formatted, and no strings, are written again in
/// the default format.
[[nodiscard]] int copy_ds_compress_when(open_file &from, open_file &to, std::int32_t when);
