// Deleting datasets: they stay in the file, marked.
#pragma once

#include "io/Src/Main/open_file.h"

/// Deletes every live dataset that matches; patterns and a negative WHEN are
/// allowed. 17 if none does. The file has been made writable by
/// setfilebusyflag().
[[nodiscard]] int delete_ds(open_file &file, const char *what, const char *where,
                            std::int32_t when);

/// Deletes exactly those that a search has found in this file since its last
/// change.
[[nodiscard]] int delete_located(open_file &file, const located_datasets &found);
