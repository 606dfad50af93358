// Locks a file, and tries again if its name then belongs to another file.
#include "veltext/fileLock.h"

#include "veltext/error.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace veltext {

namespace {

/// Ignores a file system that cannot lock. EditedFile::replace still refuses to
/// replace a file that has changed since it was read.
void waitForLock(int descriptor)
{
    while (flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
    }
}

bool isSameFile(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

FileLock::FileLock(const std::string &file)
{
    for (;; close()) {
        open(file);
        waitForLock(descriptor_);
        struct stat named;
        if (fstat(descriptor_, &status_) == 0 && stat(file.c_str(), &named) == 0 &&
            isSameFile(status_, named)) {
            return;
        }
    }
}

FileLock::~FileLock()
{
    close();
}

/// Throws the reason why the file cannot be locked, even if it no longer exists.
void FileLock::open(const std::string &file)
{
    if (stat(file.c_str(), &status_) != 0) {
        throw systemError(file, errno);
    }
    if (!S_ISREG(status_.st_mode)) {
        throw Error(file, 0, "is not a regular file");
    }
    std::error_code error;
    target_ = std::filesystem::canonical(file, error).string();
    if (error) {
        throw systemError(file, error.value());
    }
    // If the name belongs to a pipe now, opening must not wait.
    descriptor_ = ::open(target_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) {
        throw systemError(file, errno);
    }
}

void FileLock::close()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    descriptor_ = -1;
}

} // namespace veltext
