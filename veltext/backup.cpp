// Keeps the previous version of a file: renames it, links it, or copies it if a link is impossible.
#include "veltext/backup.h"

#include "veltext/error.h"
#include "veltext/readFile.h"
#include "veltext/temporaryFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace veltext {

namespace {

bool isLink(const std::string &file)
{
    std::error_code unknown;
    return std::filesystem::is_symlink(file, unknown);
}

/// Whether a file may be moved. Devices, pipes and the links in /dev to open
/// files belong to the system. True for a missing file; the move then fails.
bool isMovable(const std::string &file)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return false;
    }
    return !isLink(file) || !isSameFile(std::filesystem::path(file).parent_path().string(), "/dev");
}

bool moveTo(const std::string &backup, const std::string &file)
{
    if (!isMovable(file)) {
        return false;
    }
    const bool isBackup = isSameFile(file, backup);
    if (isBackup && isLink(file)) {
        return false; // the link would replace the data that it leads to
    }
    // rename() between two names of one file does nothing.
    const bool isSecondName = isBackup && !isLink(backup);
    if (isSecondName ? ::unlink(file.c_str()) == 0
                     : std::rename(file.c_str(), backup.c_str()) == 0) {
        return true;
    }
    // An earlier save that failed may have moved the file already.
    std::error_code unknown;
    const bool isGone = !std::filesystem::exists(file, unknown);
    return isGone && std::filesystem::exists(backup, unknown);
}

/// Adds a second name for the same file, which costs nothing. If the file system
/// refuses that, for example for files of other users, makes a copy.
void addName(const std::string &backup, const std::string &file)
{
    TemporaryFile temporary(backup, backup);
    ::unlink(temporary.name().c_str());
    if (::link(file.c_str(), temporary.name().c_str()) == 0) {
        temporary.rename(backup);
        return;
    }
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0) {
        throw systemError(backup, errno);
    }
    TemporaryFile copy(backup, backup);
    copy.copyOwner(status);
    copy.fill(readBytes(file), status.st_mode);
    copy.rename(backup);
}

} // namespace

std::string backupNameOf(const std::string &file)
{
    return file + ".bak";
}

bool makeBackup(const std::string &file, const std::string &backup, Backup way)
{
    if (way == Backup::Move) {
        return moveTo(backup, file);
    }
    addName(backup, file);
    return true;
}

bool isSameFile(const std::string &one, const std::string &other)
{
    std::error_code unknown;
    return std::filesystem::equivalent(one, other, unknown) && !unknown;
}

} // namespace veltext
