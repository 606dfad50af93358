// Data of structures: records, one on each line in text, without gaps in binary.
#pragma once

#include "io/Src/Main/data_io.h"

/// 4 or 11 without a message if a record cannot be written.
[[nodiscard]] int write_structure(zot_io &io, const data_shape &shape, const IO_data &data);

/// 18 if an item of a line has no ESC after it.
[[nodiscard]] int read_structure(zot_io &io, const data_shape &shape, IO_data &data);
