// Writes a temporary file and renames it to the file that it replaces.
#include "veltext/replaceFile.h"

#include "veltext/backup.h"
#include "veltext/error.h"
#include "veltext/heldSignals.h"
#include "veltext/temporaryFile.h"
#include "veltext/writeAll.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace veltext {

namespace {

constexpr mode_t newFileMode = 0666;

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
    if (descriptor < 0) {
        throw systemError(file, errno);
    }
    const int error = writeAll(descriptor, bytes);
    if (close(descriptor) != 0 || error) {
        throw systemError(file, error ? error : errno);
    }
}

} // namespace

EditedFile::EditedFile(const std::string &file) : name_(file), lock_(file) {}

std::string EditedFile::backupName() const
{
    return backupNameOf(name_);
}

void EditedFile::replace(std::string_view bytes, Former former) const
{
    const HeldSignals held;
    TemporaryFile temporary(lock_.target(), name_);
    temporary.copyOwner(lock_.status());
    temporary.fill(bytes, lock_.status().st_mode);
    struct stat now;
    if (stat(lock_.target().c_str(), &now) != 0) {
        throw systemError(name_, errno);
    }
    if (!isUnchanged(lock_.status(), now)) {
        throw Error(name_ +
                    ": another program has changed this file; nothing was written; try again");
    }
    if (former == Former::Backup) {
        makeBackup(lock_.target(), backupName(), Backup::Both);
    }
    temporary.rename(lock_.target());
}

void writeFile(const std::string &file, std::string_view bytes)
{
    struct stat before;
    const bool exists = stat(file.c_str(), &before) == 0;
    if (exists && !S_ISREG(before.st_mode)) {
        writeStraight(file, bytes);
        return;
    }
    if (exists && access(file.c_str(), W_OK) != 0) {
        throw systemError(file, errno);
    }
    std::error_code error;
    const std::string target = exists ? std::filesystem::canonical(file, error).string() : file;
    const HeldSignals held;
    TemporaryFile temporary(target, file);
    temporary.fill(bytes, exists ? before.st_mode : maskedNewFileMode());
    temporary.rename(target);
}

} // namespace veltext
