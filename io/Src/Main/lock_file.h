// The lock file next to a container: "%s.lck" with one integer, −1 for a writer, n for n
// readers. Without this file there is no lock.
#pragma once

#include "io/Src/Main/open_file.h"

#include <optional>
#include <string>

/// The lock that iif_set_lock() should set.
enum lock_request : int { IO_UNLOCK = -1, IO_LOCK_READ = 0, IO_LOCK_WRITE = 1 };

/// Does nothing if the file's mode already satisfies the request. 21 with a message if the
/// lock of another process prevents it.
[[nodiscard]] int iif_set_lock(open_file &file, lock_request request);

/// Removes what this process has added to the level, in every mode of the file.
[[nodiscard]] int release_lock(open_file &file);

/// Writes −1 into the lock file of a file that this process has locked.
[[nodiscard]] int write_busy_level(open_file &file);

/// The contents of a lock file.
struct lock_state
{
    bool exists = false;
    std::optional<std::int32_t> level; ///< nothing if the file cannot be read or has no number
};

/// The contents of the lock file with that name. If it is empty, another process has just
/// made it, and it is read again for a fifth of a second.
lock_state read_lock_file(io_env &env, const char *name);

/// The name of the lock file of a container.
std::string lock_file_name(const std::string &container);
std::string lock_file_name(const open_file &file);

/// The bytes of that name, including its NUL.
std::size_t lock_file_name_bytes(const open_file &file);
