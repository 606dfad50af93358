// Makes, fills, renames and removes a temporary file.
#include "veltext/temporaryFile.h"

#include "veltext/error.h"
#include "veltext/folder.h"
#include "veltext/writeAll.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace veltext {

namespace {

constexpr mode_t permissionBits = 07777;

} // namespace

TemporaryFile::TemporaryFile(const std::string &file, std::string shown)
    : shown_(std::move(shown)), name_(folderOf(file) + "/.veltool-XXXXXX")
{
    descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        throw systemError(shown_, errno);
    }
}

TemporaryFile::~TemporaryFile()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
    unlink(name_.c_str());
}

void TemporaryFile::copyOwner(const struct stat &from) const
{
    struct stat own;
    if (fstat(descriptor_, &own) == 0 && (own.st_uid != from.st_uid || own.st_gid != from.st_gid)) {
        (void)!fchown(descriptor_, from.st_uid, from.st_gid);
    }
}

void TemporaryFile::fill(std::string_view bytes, mode_t mode)
{
    if (const int error = writeAll(descriptor_, bytes)) {
        throw systemError(shown_, error);
    }
    if (fchmod(descriptor_, mode & permissionBits) != 0 || fsync(descriptor_) != 0) {
        throw systemError(shown_, errno);
    }
    const int descriptor = std::exchange(descriptor_, -1);
    if (close(descriptor) != 0) {
        throw systemError(shown_, errno);
    }
}

void TemporaryFile::rename(const std::string &to) const
{
    if (std::rename(name_.c_str(), to.c_str()) != 0) {
        throw systemError(shown_, errno);
    }
    flushFolderOf(to);
}

} // namespace veltext
