// A lock with which only one program at a time changes a file.
//
// The lock is on the file itself, so that no lock file is needed. A program that
// replaces a file gives its name to another file. A program that has waited for
// the former file therefore checks which file has the name now, and locks that.
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

    /// The path of the file after all links.
    [[nodiscard]] const std::string &target() const { return target_; }
    /// The file's status at the time of the lock.
    [[nodiscard]] const struct stat &status() const { return status_; }

private:
    void open(const std::string &file);
    void close();

    std::string target_;
    int descriptor_ = -1;
    struct stat status_;
};

} // namespace veltext
