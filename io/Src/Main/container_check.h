// Lists, verifies and rebuilds a whole container. For tools; clients that only
// read and write datasets use iocntc().
#pragma once

#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/open_file.h"

#include <functional>
#include <vector>

/// A dataset of a container in a listing.
struct container_entry
{
    char status = 'Y';  ///< 'Y' live, 'N' deleted
    format_code format; ///< the one before a deletion
    std::int64_t position = 0;
    std::int64_t length = 0;
    bool has_header = true; ///< false for a deleted dataset whose header is damaged
    dataset_header header;
};

/// The datasets of an open file by position: live ones by the index, or with
/// `all` also the deleted ones, by a scan.
[[nodiscard]] int list_container(open_file &file, bool all, std::vector<container_entry> &entries);

/// One thing that is wrong in a container.
struct container_fault
{
    std::int64_t position = 0; ///< byte of the file
    int code = IO_BAD_FILE;
    std::string text; ///< without a line end
};

/// Called from time to time with the number of checked bytes and of all bytes.
using container_progress = std::function<void(std::int64_t done, std::int64_t total)>;

/// Checks every byte of a file: sizes, tags, headers, data, the end of each
/// dataset, the index. `faults` gets everything that is wrong, by position. Returns a
/// code only if the file cannot be opened. The file does not change.
[[nodiscard]] int verify_container(io_env &env, const io_reporter &report, const char *name,
                                   std::vector<container_fault> &faults,
                                   const container_progress &progress = nullptr);

/// The result of a rebuild.
struct rebuild_result
{
    std::int32_t datasets = 0;         ///< in the new index
    std::vector<located_dataset> lost; ///< live in the old index, not in the new one
    std::vector<std::string> messages; ///< of the scan, one line each
    std::int64_t dropped_bytes = 0;    ///< after the last complete dataset, without an index
};

/// Scans the file and writes its index again. If the scan finds damage, returns a
/// code and does not change the file.
[[nodiscard]] int rebuild_container(io_env &env, const io_reporter &report, const char *name,
                                    rebuild_result &result);
