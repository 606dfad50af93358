// The index as it is in a file: writing it, loading it, and making it again
// by stepping through the datasets.
#pragma once

#include "io/Src/Main/open_file.h"

/// Writes the index dataset at the file's index position; the stream then
/// is at its end.
[[nodiscard]] int write_index(open_file &file);

/// Loads the stored index of a file of `size` bytes; the index position becomes
/// where it is. Any code means that it cannot be used and the table is empty.
[[nodiscard]] int create_indextable(open_file &file, std::int64_t size);

/// Scans the file from its first dataset on. 0 also where the scan ended early,
/// at "*CRASH", an interrupted write or a cut tail; 20 for damage. The index
/// position becomes the end of the last whole dataset.
[[nodiscard]] int recreate_indextable(open_file &file, std::int64_t size);
