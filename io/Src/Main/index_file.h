// Writes the index to a file, loads it, and makes it again by a scan of the datasets.
#pragma once

#include "io/Src/Main/open_file.h"

/// Writes the index dataset at the file's index position; the stream then
/// is at its end.
[[nodiscard]] int write_index(open_file &file);

/// Loads the stored index of a file of `size` bytes, and sets the index position to its
/// place. Any code means that it cannot be used and the table is empty.
[[nodiscard]] int create_indextable(open_file &file, std::int64_t size);

/// Scans the file from its first dataset on. 0 also if the scan ended early, at "*CRASH", an
/// interrupted write or a dataset that is cut off; 20 for damage. The index position becomes
/// the end of the last complete dataset.
[[nodiscard]] int recreate_indextable(open_file &file, std::int64_t size);
