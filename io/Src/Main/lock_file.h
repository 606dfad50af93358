// The lock file beside a container: "%s.lck" with one integer, −1 for a
// writer, n for n readers. Without it nobody holds the container.
#pragma once

#include "io/Src/Main/open_file.h"

#include <optional>

enum lock_request : int { IO_UNLOCK = -1, IO_LOCK_READ = 0, IO_LOCK_WRITE = 1 };

/// Does nothing where the file's mode already satisfies the request. 21 with a
/// message if somebody else's lock is in the way.
int iif_set_lock(open_file &file, lock_request request);

/// Takes back what this process added to the level, whatever the file's mode.
int release_lock(open_file &file);

/// Writes −1 into the lock file of a file that this process holds.
int write_busy_level(open_file &file);

std::string lock_file_name(const open_file &file);

/// What that name takes, its NUL included.
std::size_t lock_file_name_bytes(const open_file &file);
