// Finding datasets in the index of an open container. Nothing here touches the
// file.
#pragma once

#include "io/Src/Main/index_table.h"
#include "io/Src/Main/io_records.h"

#include <string>
#include <vector>

/// The fields of an index line.
struct located_dataset
{
    char what[IO_STRING_SLOT];
    char where[IO_STRING_SLOT];
    std::int32_t when;
    std::int64_t length;
    std::int64_t position;
    std::int32_t slot; ///< in the index; −1: found to be deleted
};

/// The result of a search, in its order.
using located_datasets = std::vector<located_dataset>;

/// "%s%c%s%c%s%c%d%c%I64d%c%I64d"
std::string format_index_line(char status, std::string_view what, std::string_view where,
                              std::int32_t when, std::int64_t length, std::int64_t position);

/// Splits a line; the slot does not change. Empty fields are skipped. 12 for a missing field.
[[nodiscard]] int parseindex(const io_reporter &report, const char *line, located_dataset &record);

/// The ways to search, which get_ds_location() describes.
enum location_mode { IO_SORT_WHAT, IO_SORT_WHERE, IO_FULL_SCAN };

/// The live datasets that match, in ascending byte order of the array searched
/// (the full scan: in index order). A negative WHEN matches every WHEN. Modes:
/// IO_SORT_WHAT compares WHAT and, unless null, WHERE, neither with a pattern;
/// IO_SORT_WHERE compares WHERE alone (`what` is not used); IO_FULL_SCAN
/// takes patterns in both.
[[nodiscard]] int get_ds_location(const io_reporter &report, index_table &index, location_mode mode,
                                  const char *what, const char *where, std::int32_t when,
                                  located_datasets &found);

/// The search that all requests use: patterns allowed in WHAT and WHERE;
/// several matches of a negative WHEN are ordered by WHEN, largest first.
/// White space at the end of WHAT and WHERE does not count. 17 where nothing
/// matches, without a message; 14 with one if there is no memory.
[[nodiscard]] int find_datasets(const io_reporter &report, index_table &index, const char *what,
                                const char *where, std::int32_t when, located_datasets &found);

/// find_datasets() into the client's arrays: strings (WHAT, WHERE), integers
/// (WHEN) and offsets (position, length). Sets `matches`. 14 if one of the three
/// is too small, and then all three sizes are set to what is needed. `scratch`
/// is memory to be used again.
[[nodiscard]] int locate_dataset(const io_reporter &report, index_table &index, const char *what,
                                 const char *where, std::int32_t when, located_datasets &scratch,
                                 IO_data &out);

/// To be called after many insertions: makes the orders that lookups by WHERE
/// need. 14 if there is no memory.
[[nodiscard]] int update_index(const io_reporter &report, index_table &index);
