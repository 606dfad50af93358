#include "veltext/replaceFile.h"

#include "veltext/error.h"
#include "veltext/folder.h"
#include "veltext/heldSignals.h"
#include "veltext/readFile.h"
#include "veltext/writeAll.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace veltext {

namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t newFileMode = 0666;

/// A new file that is gone again unless it is given its final name.
class TemporaryFile
{
public:
    /// In the folder of `file`, so that it can take its name; messages call it `shown`.
    TemporaryFile(const std::string &file, std::string shown)
        : shown_(std::move(shown)), name_(folderOf(file) + "/.veltool-XXXXXX")
    {
        descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
        if (descriptor_ < 0)
            throw systemError(shown_, errno);
    }

    ~TemporaryFile()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
        unlink(name_.c_str());
    }

    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    [[nodiscard]] const std::string &name() const { return name_; }

    /// As far as the user may; without the right the file becomes his own.
    void copyOwner(const struct stat &from) const
    {
        struct stat own;
        if (fstat(descriptor_, &own) == 0 &&
            (own.st_uid != from.st_uid || own.st_gid != from.st_gid))
            (void)!fchown(descriptor_, from.st_uid, from.st_gid);
    }

    /// Writes everything and closes the file.
    void fill(std::string_view bytes, mode_t mode)
    {
        if (const int error = writeAll(descriptor_, bytes))
            throw systemError(shown_, error);
        if (fchmod(descriptor_, mode & permissionBits) != 0 || fsync(descriptor_) != 0)
            throw systemError(shown_, errno);
        const int descriptor = std::exchange(descriptor_, -1);
        if (close(descriptor) != 0)
            throw systemError(shown_, errno);
    }

    void rename(const std::string &to) const
    {
        if (std::rename(name_.c_str(), to.c_str()) != 0)
            throw systemError(shown_, errno);
        flushFolderOf(to);
    }

private:
    std::string shown_;
    std::string name_;
    int descriptor_ = -1;
};

bool isUnchanged(const struct stat &before, const struct stat &now)
{
    return before.st_ino == now.st_ino && before.st_dev == now.st_dev &&
           before.st_size == now.st_size && before.st_mtim.tv_sec == now.st_mtim.tv_sec &&
           before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

mode_t maskedNewFileMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return newFileMode & ~mask;
}

void writeStraight(const std::string &file, std::string_view bytes)
{
    const int descriptor = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        throw systemError(file, errno);
    const int error = writeAll(descriptor, bytes);
    if (close(descriptor) != 0 || error)
        throw systemError(file, error ? error : errno);
}

} // namespace

EditedFile::EditedFile(const std::string &file) : name_(file), lock_(file) {}

void EditedFile::replace(std::string_view bytes) const
{
    const HeldSignals held;
    TemporaryFile temporary(lock_.target(), name_);
    temporary.copyOwner(lock_.status());
    temporary.fill(bytes, lock_.status().st_mode);
    struct stat now;
    if (stat(lock_.target().c_str(), &now) != 0)
        throw systemError(name_, errno);
    if (!isUnchanged(lock_.status(), now))
        throw Error(name_ + ": was changed by another program meanwhile; nothing was written");
    keepBackup();
    temporary.rename(lock_.target());
}

void EditedFile::keepBackup() const
{
    TemporaryFile temporary(backupName(), backupName());
    // A second name for the same file costs nothing. Where there are no such
    // names, and for files of others, it is a copy.
    unlink(temporary.name().c_str());
    if (link(lock_.target().c_str(), temporary.name().c_str()) == 0) {
        temporary.rename(backupName());
        return;
    }
    TemporaryFile copy(backupName(), backupName());
    copy.copyOwner(lock_.status());
    copy.fill(readBytes(lock_.target()), lock_.status().st_mode);
    copy.rename(backupName());
}

void writeFile(const std::string &file, std::string_view bytes)
{
    struct stat before;
    const bool exists = stat(file.c_str(), &before) == 0;
    if (exists && !S_ISREG(before.st_mode)) {
        writeStraight(file, bytes);
        return;
    }
    if (exists && access(file.c_str(), W_OK) != 0)
        throw systemError(file, errno);
    std::error_code error;
    const std::string target = exists ? std::filesystem::canonical(file, error).string() : file;
    const HeldSignals held;
    TemporaryFile temporary(target, file);
    temporary.fill(bytes, exists ? before.st_mode : maskedNewFileMode());
    temporary.rename(target);
}

} // namespace veltext
