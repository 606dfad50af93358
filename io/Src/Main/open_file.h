// An open container: its stream, its index, its lock.
//
// Opening takes the lock, checks that the file is a container and loads its
// index, or makes it again by scanning. Closing writes index and file size if
// anything changed, and removes the lock. A file that was opened to read is never
// written, even if its index had to be made again.
#pragma once

#include "io/Src/Main/get_ds_location.h"
#include "io/Src/Main/index_table.h"
#include "io/Src/Main/zot_primitives.h"

#include <string>

/// Whether a file is open, and for what.
enum class open_mode { none, read, write };

/// A container from opening to closing. Its stream and index belong to it.
struct open_file
{
    open_file(io_env &environment, const io_reporter &reporter)
        : env(&environment), report(&reporter)
    {
    }

    io_env *env;               ///< not owned
    const io_reporter *report; ///< not owned
    std::string name;
    zot_io io;
    open_mode mode = open_mode::none;

    /// As this process saw it last: −1 locked for writing, 0 not locked, n readers.
    std::int32_t lock_level = 0;
    bool lock_taken = false; ///< this process raised the lock file's level

    /// When this process opened the file to read, there was a lock file of level 0. It is the
    /// lock of another process: it stops every writer, and it stays.
    bool lock_was_zero = false;
    bool changed = false; ///< closing must write index and size

    /// The file has a readable index. It must be made unreadable before anything else is
    /// changed, so that no program uses it.
    bool stored_index = false;

    index_table index;
    std::int64_t index_position = 0; ///< where the index is to be written: after the last dataset
};

/// What an opening may do besides its access code.
struct open_options
{
    bool may_create = true;     ///< with an access that writes
    bool load_index = true;     ///< false: the index stays empty, nothing of it is read
    bool force_rebuild = false; ///< scan even if the stored index is correct
};

/// Access by its first character: "r" to read, "w" and "a" to read and write,
/// "d" to write if possible, otherwise to read. On failure the file is closed and
/// no lock stays.
[[nodiscard]] int iif_open(open_file &file, const char *name, const char *access,
                           open_options options = {});

/// Writes the INFO block of a new file (only in memory if opened to read).
[[nodiscard]] int iif_create_empty(open_file &file);

/// Writes index and size if anything changed.
[[nodiscard]] int iif_flush(open_file &file);

/// Flushes, closes, unlocks. The file is closed even if this fails.
[[nodiscard]] int iif_close(open_file &file);

/// Call it before every request that writes. Makes the file writable, tries this for 20
/// seconds, and locks it.
[[nodiscard]] int setfilebusyflag(open_file &file, bool may_create = true);

/// Call it before the first byte of a change. Writes "*CRASH" over the index and cuts the
/// file after it.
[[nodiscard]] int begin_change(open_file &file);

/// The result of writing "*CRASH" into a file.
enum class crash_tag {
    written,
    not_reached, ///< the file could not be cut; errno says why
    not_written, ///< the file ends at the position, without the tag; errno says why
};

/// Cuts the file at `position` and writes "*CRASH" there. It cuts first, so that the file
/// ends after a complete dataset even if the tag cannot be written.
crash_tag put_crash_tag(open_file &file, std::int64_t position, format_code format);

/// Where the first dataset is.
std::int64_t first_dataset_position(const open_file &file);
