// Looking at a container as a whole: what is in it, what is wrong with it,
// and a new index where the old one is. For tools; clients that only read
// and write datasets use iocntc().
#pragma once

#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/open_file.h"

#include <functional>
#include <vector>

/// A dataset of a container, as a listing describes it.
struct container_entry
{
    char status = 'Y';  ///< 'Y' live, 'N' deleted
    format_code format; ///< that of before a deletion
    std::int64_t position = 0;
    std::int64_t length = 0;
    bool has_header = true; ///< false for a deleted dataset whose header is damaged
    dataset_header header;
};

/// The datasets of an open file by position: live ones by the index, or with
/// `all` also the deleted ones, by a scan.
[[nodiscard]] int list_container(open_file &file, bool all, std::vector<container_entry> &entries);

/// Something that is wrong in a container.
struct container_fault
{
    std::int64_t position = 0; ///< byte of the file
    int code = IO_BAD_FILE;
    std::string text; ///< without a line end
};

/// Called now and then with the bytes looked at and all there are.
using container_progress = std::function<void(std::int64_t done, std::int64_t total)>;

/// Looks at every byte of a file: sizes, tags, headers, data, the end of each
/// dataset, the index. A code only if the file cannot be opened at all; faults in
/// it are in `faults`, by position. The file is not changed.
[[nodiscard]] int verify_container(io_env &env, const io_reporter &report, const char *name,
                                   std::vector<container_fault> &faults,
                                   const container_progress &progress = nullptr);

/// What a rebuilding did.
struct rebuild_result
{
    std::int32_t datasets = 0;         ///< in the new index
    std::vector<located_dataset> lost; ///< live in the old index, not in the new one
    std::vector<std::string> messages; ///< of the scan, a line each
    std::int64_t dropped_bytes = 0;    ///< after the last whole dataset, an index not counted
};

/// Scans the file and writes its index again. A code, and an unchanged file, if
/// the scan meets damage.
[[nodiscard]] int rebuild_container(io_env &env, const io_reporter &report, const char *name,
                                    rebuild_result &result);
