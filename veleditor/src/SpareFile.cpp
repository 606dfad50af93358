// Writes and checks spare files.
#include "veleditor/src/SpareFile.h"

#include "veleditor/src/TextFile.h"
#include "veltext/error.h"
#include "veltext/folder.h"
#include "veltext/readFile.h"
#include "veltext/stateFolder.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velEditor {

namespace {

constexpr mode_t permissionBits = 07777;

/// Bytes of the file's name that are used; the rest is for the suffix.
constexpr std::size_t longestName = 200;

/// The user's folder for spare files; made if needed. Empty if the environment does
/// not name a place or the folder cannot be made.
std::string userFolder()
{
    const std::filesystem::path folder = veltext::stateFolder("saved");
    if (folder.empty()) {
        return {};
    }
    std::error_code failure;
    if (std::filesystem::create_directories(folder, failure)) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, failure);
    }
    return std::filesystem::is_directory(folder, failure) ? folder.string() : std::string();
}

// A user without the right to change the owner remains the owner.
void copyOwnerAndMode(const std::string &from, int descriptor)
{
    struct stat status = {};
    if (::stat(from.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    static_cast<void>(!::fchown(descriptor, status.st_uid, status.st_gid));
    static_cast<void>(::fchmod(descriptor, status.st_mode & permissionBits));
}

bool holds(const std::string &file, std::string_view bytes)
{
    try {
        return veltext::readBytes(file) == bytes;
    } catch (const veltext::Error &) {
        return false;
    }
}

} // namespace

SpareFile::SpareFile(const std::string &file, std::string_view bytes)
{
    if (write(veltext::folderOf(file), file, bytes)) {
        return;
    }
    const std::string other = userFolder();
    if (!other.empty()) {
        static_cast<void>(write(other, file, bytes));
    }
}

SpareFile::~SpareFile()
{
    if (!name_.empty()) {
        static_cast<void>(std::remove(name_.c_str()));
    }
}

/// Writes a new file in a folder. Keeps the first error.
bool SpareFile::write(const std::string &folder, const std::string &file, std::string_view bytes)
{
    const std::string shortName =
        std::filesystem::path(file).filename().string().substr(0, longestName);
    std::string name = folder + '/' + shortName + ".kept-XXXXXX";
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    std::string failure;
    if (descriptor >= 0) {
        copyOwnerAndMode(file, descriptor);
        TextFile spare(descriptor);
        spare.write(bytes);
        if (spare.close() && holds(name, bytes)) {
            veltext::flushFolderOf(name);
            name_ = name;
            return true;
        }
        failure = spare.error().empty() ? std::strerror(EIO) : spare.error();
        static_cast<void>(std::remove(name.c_str()));
    } else {
        failure = std::strerror(errno);
    }
    if (error_.empty()) {
        error_ = failure;
    }
    return false;
}

std::string SpareFile::keep()
{
    return std::exchange(name_, {});
}

bool SpareFile::becomes(const std::string &name)
{
    if (std::rename(name_.c_str(), name.c_str()) != 0) {
        return false;
    }
    name_.clear();
    veltext::flushFolderOf(name);
    return true;
}

} // namespace velEditor
