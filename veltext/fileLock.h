// One program at a time changes a file.
//
// The lock is on the file itself, so that nothing is left beside it. A program
// that replaces a file gives its name to another file; whoever has waited for
// the former one therefore looks again which file has the name, and locks that.
#pragma once

#include <string>

#include <sys/stat.h>

namespace veltext {

/// The lock of one file, held for as long as the object lives.
class FileLock
{
public:
    /// Waits until no other program holds the lock of the regular file `file`,
    /// and holds it for as long as the object lives. A link is followed. Where a
    /// file system has no locks, nothing is locked. Throws an Error for a file
    /// that cannot be written, or is not a regular one.
    explicit FileLock(const std::string &file);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    /// Where links lead.
    [[nodiscard]] const std::string &target() const { return target_; }
    /// As it was when the lock was taken.
    [[nodiscard]] const struct stat &status() const { return status_; }

private:
    void open(const std::string &file);
    void close();

    std::string target_;
    int descriptor_ = -1;
    struct stat status_;
};

} // namespace veltext
