// The lock file beside a container: "%s.lck" with one integer, −1 for a
// writer, n for n readers. Without it nobody holds the container.
#pragma once

#include "io/Src/Main/open_file.h"

#include <optional>
#include <string>

/// What iif_set_lock() is to bring the lock to.
enum lock_request : int { IO_UNLOCK = -1, IO_LOCK_READ = 0, IO_LOCK_WRITE = 1 };

/// Does nothing where the file's mode already satisfies the request. 21 with a
/// message if somebody else's lock is in the way.
[[nodiscard]] int iif_set_lock(open_file &file, lock_request request);

/// Undoes what this process added to the level, whatever the file's mode.
[[nodiscard]] int release_lock(open_file &file);

/// Writes −1 into the lock file of a file that this process holds.
[[nodiscard]] int write_busy_level(open_file &file);

/// What a lock file says.
struct lock_state
{
    bool exists = false;
    std::optional<std::int32_t> level; ///< nothing if the file cannot be read or has no number
};

/// What the lock file of that name says. One that is empty was just made by
/// another process, and is read again for a fifth of a second.
lock_state read_lock_file(io_env &env, const char *name);

/// The name of the lock file of a container.
std::string lock_file_name(const std::string &container);
std::string lock_file_name(const open_file &file);

/// What that name takes, its NUL included.
std::size_t lock_file_name_bytes(const open_file &file);
