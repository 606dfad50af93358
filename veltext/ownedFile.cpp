// Makes, locks, finds and removes files that belong to a process.
#include "veltext/ownedFile.h"

#include "veltext/error.h"
#include "veltext/folder.h"
#include "veltext/stateFolder.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltext {

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr int openFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

enum class LockResult { Held, Busy, NoLocks };

LockResult tryLock(int descriptor)
{
    while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            return LockResult::Busy;
        }
        if (errno != EINTR) {
            return LockResult::NoLocks;
        }
    }
    return LockResult::Held;
}

/// Whether the process that a name ends in runs on this computer.
bool runsProcessOf(const std::string &path)
{
    const std::string name = path.substr(path.rfind('.') + 1);
    pid_t process = 0;
    std::from_chars(name.data(), name.data() + name.size(), process);
    return process > 0 && (kill(process, 0) == 0 || errno == EPERM);
}

/// Whether the name still belongs to the open file: another process may have found the
/// file before it was locked, and removed it.
bool hasName(int descriptor, const std::string &path)
{
    struct stat own = {};
    struct stat named = {};
    return fstat(descriptor, &own) == 0 && lstat(path.c_str(), &named) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

} // namespace

OwnedFile::OwnedFile(std::string path, int descriptor)
    : path_(std::move(path)), descriptor_(descriptor)
{
}

OwnedFile OwnedFile::create(const std::string &folder, const std::string &name)
{
    makePrivateFolder(folder);
    const std::string first = folder + '/' + name + '.' + std::to_string(getpid());
    for (int number = 1;; ++number) {
        const std::string path = number == 1 ? first : first + '-' + std::to_string(number);
        const int descriptor = ::open(path.c_str(), openFlags | O_CREAT | O_EXCL, ownerOnly);
        if (descriptor < 0 && errno == EEXIST) {
            continue; // of another process that had this number
        }
        if (descriptor < 0) {
            throw systemError(path, errno);
        }
        OwnedFile file(path, descriptor);
        if (tryLock(descriptor) != LockResult::Busy && hasName(descriptor, path)) {
            flushFolderOf(path);
            return file;
        }
    }
}

std::optional<OwnedFile> OwnedFile::take(const std::string &path)
{
    const int descriptor = ::open(path.c_str(), openFlags);
    if (descriptor < 0) {
        return {};
    }
    OwnedFile file(path, descriptor);
    const LockResult lock = tryLock(descriptor);
    if (lock == LockResult::Busy || (lock == LockResult::NoLocks && runsProcessOf(path)) ||
        !hasName(descriptor, path)) {
        return {};
    }
    return file;
}

OwnedFile::OwnedFile(OwnedFile &&other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1))
{
}

OwnedFile &OwnedFile::operator=(OwnedFile &&other) noexcept
{
    if (this != &other) {
        close();
        path_ = std::move(other.path_);
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

OwnedFile::~OwnedFile()
{
    close();
}

void OwnedFile::close()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    descriptor_ = -1;
}

void OwnedFile::remove()
{
    if (descriptor_ >= 0 && hasName(descriptor_, path_)) {
        static_cast<void>(unlink(path_.c_str()));
        flushFolderOf(path_);
    }
    close();
}

std::vector<std::string> ownedFiles(const std::string &folder, const std::string &name)
{
    std::vector<std::string> paths;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().starts_with(name + '.')) {
            paths.push_back(entry->path().string());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace veltext
