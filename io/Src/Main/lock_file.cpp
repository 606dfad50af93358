// Reads, writes and removes lock files, and waits for the levels in them.
#include "io/Src/Main/lock_file.h"

#include "io/Src/Main/decimal.h"
#include "io/Src/Main/zot_numbers.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t lock_text_max = 64;
constexpr const char *lock_suffix = ".lck";
constexpr int fresh_attempts = 20;
constexpr int fresh_wait_ms = 10;

/// Reads a lock file. If another process has just made it, it is empty until that
/// process writes its level; this function waits for that. Returns the bytes
/// read, −1 on failure. `there` is false if there is no lock file.
std::int64_t read_lock_text(io_env &env, const char *name, char (&text)[lock_text_max], bool &there)
{
    for (int attempt = 0;; attempt++) {
        std::unique_ptr<io_file> lock = env.open(name, io_open::read);
        // If the name is too long for a lock file, no lock file exists.
        there = lock || (errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG);
        std::int64_t got = lock ? lock->read_at(0, text, sizeof text) : -1;
        if (got != 0 || attempt == fresh_attempts) {
            return got;
        }
        env.sleep(fresh_wait_ms);
    }
}

/// The level in the lock file; no level if there is no lock file. Returns 21 if
/// it cannot be read.
[[nodiscard]] int read_level(open_file &file, std::optional<std::int32_t> &level)
{
    std::string name = lock_file_name(file);
    lock_state state = read_lock_file(*file.env, name.c_str());
    level = state.level;
    if (state.exists && !state.level) {
        return file.report->error(IO_LOCKED, "iif_set_lock: error reading lock file %s",
                                  name.c_str());
    }
    return IO_OK;
}

std::string level_text(std::int32_t level)
{
    std::string text;
    zotappendIntr(text, level);
    return text += '\n';
}

/// Writes the whole text at once, so that the file always contains a number:
/// another process may be reading it.
bool write_level(io_file &lock, std::int32_t level)
{
    std::string text = level_text(level);
    return lock.write_at(0, text.data(), text.size()) &&
           lock.truncate(static_cast<std::int64_t>(text.size()));
}

[[nodiscard]] int open_failed(const open_file &file, const std::string &name, const char *purpose)
{
    return file.report->zotsystemErr(IO_LOCKED, "iif_set_lock: error opening lockfile %s for %s",
                                     name.c_str(), purpose);
}

[[nodiscard]] int store_level(open_file &file, std::int32_t level, bool exists)
{
    std::string name = lock_file_name(file);
    io_open how = exists ? io_open::update : io_open::create_new;
    std::unique_ptr<io_file> lock = file.env->open(name.c_str(), how);
    if (!lock) {
        return open_failed(file, name, "writing");
    }
    bool written = write_level(*lock, level);
    int number = errno;
    if (lock->close() && written) {
        return IO_OK;
    }
    if (!written) {
        errno = number;
    }
    int code = file.report->zotsystemErr(IO_LOCKED, "iif_set_lock: error writing to lock file %s",
                                         name.c_str());
    file.env->remove(name.c_str());
    return code;
}

[[nodiscard]] int lock_to_write(open_file &file, std::optional<std::int32_t> level)
{
    std::string lock = lock_file_name(file);
    bool own = file.lock_taken && file.lock_level == 1 && level == 1 && !file.lock_was_zero;
    if (level && !own) {
        if (*level < 0) {
            return file.report->error(
                IO_LOCKED,
                "iif_set_lock: file %s is already locked for write access.  Either another program"
                " is using this file, or the lock file %s is bad.",
                file.name.c_str(), lock.c_str());
        }
        return file.report->error(
            IO_LOCKED,
            "iif_set_lock: file %s is currently locked for reading at level %d, and cannot be "
            "locked"
            " for write access.  Either another program is using this file, or the lock file %s is"
            " bad.",
            file.name.c_str(), *level, lock.c_str());
    }
    if (int code = store_level(file, -1, level.has_value())) {
        return code;
    }
    file.lock_level = -1;
    file.lock_taken = true;
    return IO_OK;
}

[[nodiscard]] int lock_to_read(open_file &file, std::optional<std::int32_t> level)
{
    std::string name = lock_file_name(file);
    if (level && *level < 0) {
        return file.report->error(
            IO_LOCKED,
            "iif_set_lock: file %s is currently locked for writing, and cannot be locked for read"
            " access.  Either another program is using this file, or the lock file %s is bad.",
            file.name.c_str(), name.c_str());
    }
    std::int32_t next = level.value_or(0) + 1;
    io_open how = level ? io_open::update : io_open::create_new;
    std::unique_ptr<io_file> lock = file.env->open(name.c_str(), how);
    if (!lock && !level && errno == EEXIST) {
        // Another process made the lock file first, so its level counts.
        if (int code = read_level(file, level)) {
            return code;
        }
        if (level) {
            return lock_to_read(file, level);
        }
    }
    if (!lock) {
        // Readers may open files in a folder in which they cannot write.
        file.report->trace("warning: unable to lock file %s for reading, continuing anyway",
                           file.name.c_str());
        file.lock_level = next;
        return IO_OK;
    }
    bool written = write_level(*lock, next);
    if (!lock->close() || !written) {
        int code = file.report->zotsystemErr(
            IO_LOCKED, "iif_set_lock: error writing to lock file %s", name.c_str());
        file.env->remove(name.c_str());
        return code;
    }
    file.lock_level = next;
    file.lock_taken = true;
    file.lock_was_zero = level == 0;
    return IO_OK;
}

/// For a file whose lock this process does not have.
void trace_if_unlocked(const open_file &file)
{
    const io_reporter &report = *file.report;
    if (!report.tracing()) {
        return;
    }
    std::string name = lock_file_name(file);
    bool there = file.env->open(name.c_str(), io_open::read) != nullptr;
    if (!there && (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG)) {
        report.trace("iif_set_lock: not unlocking already-unlocked file");
    }
}

} // namespace

lock_state read_lock_file(io_env &env, const char *name)
{
    char text[lock_text_max];
    lock_state state;
    std::int64_t got = read_lock_text(env, name, text, state.exists);
    std::int32_t number = 0;
    if (state.exists && got >= 0 &&
        zotparseIntr(zottrimEnd({text, static_cast<std::size_t>(got)}), number)) {
        state.level = number;
    }
    return state;
}

std::string lock_file_name(const std::string &container)
{
    return container + lock_suffix;
}

std::string lock_file_name(const open_file &file)
{
    return lock_file_name(file.name);
}

std::size_t lock_file_name_bytes(const open_file &file)
{
    return file.name.size() + std::strlen(lock_suffix) + 1;
}

int iif_set_lock(open_file &file, lock_request request)
{
    bool satisfied = (request == IO_LOCK_WRITE && file.mode == open_mode::write) ||
                     (request == IO_LOCK_READ && file.mode != open_mode::none) ||
                     (request == IO_UNLOCK && file.mode == open_mode::none);
    if (satisfied) {
        return IO_OK;
    }
    if (request == IO_UNLOCK) {
        return release_lock(file);
    }
    std::optional<std::int32_t> level;
    if (int code = read_level(file, level)) {
        return code;
    }
    return request == IO_LOCK_WRITE ? lock_to_write(file, level) : lock_to_read(file, level);
}

int release_lock(open_file &file)
{
    if (!file.lock_taken) {
        trace_if_unlocked(file);
        return IO_OK;
    }
    bool foreign = std::exchange(file.lock_was_zero, false);
    file.lock_taken = false;
    file.lock_level = 0;
    std::optional<std::int32_t> level;
    if (int code = read_level(file, level)) {
        return code;
    }
    // If this reader lowered the level, the last reader would remove the lock file.
    // So the level stays, and counts the unknown holder.
    if (foreign && level && *level > 1) {
        return IO_OK;
    }
    if (foreign && level == 0) {
        return IO_OK; // two readers found level 0 at the same time
    }
    if (level && (*level > 1 || (foreign && *level > 0))) {
        return store_level(file, *level - 1, true);
    }
    std::string name = lock_file_name(file);
    if (level && file.env->remove(name.c_str())) {
        return IO_OK;
    }
    if (level && errno != ENOENT) {
        return open_failed(file, name, "removing");
    }
    file.report->trace("iif_set_lock: not unlocking already-unlocked file");
    return IO_OK;
}

int write_busy_level(open_file &file)
{
    std::string name = lock_file_name(file);
    std::unique_ptr<io_file> lock = file.env->open(name.c_str(), io_open::update);
    if (!lock && errno == ENOENT) {
        lock = file.env->open(name.c_str(), io_open::create_new);
    }
    if (!lock || !write_level(*lock, -1) || !lock->close()) {
        return file.report->zotsystemErr(
            IO_LOCKED, "setfilebusyflag: can't write the file information to the lock file\n");
    }
    file.lock_level = -1;
    file.lock_taken = true;
    return IO_OK;
}
