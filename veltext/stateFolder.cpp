// Names and makes the folders of the user's state.
#include "veltext/stateFolder.h"

#include "veltext/environment.h"
#include "veltext/error.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include <sys/stat.h>

namespace veltext {

namespace {

constexpr mode_t ownerOnly = 0700;
constexpr mode_t othersBits = 0077;

/// The longest part of a file's name that leaves room for the number.
constexpr std::size_t longestName = 200;

/// FNV-1a with 64 bits. Kept: the folders of all users depend on it.
std::uint64_t pathNumber(const std::string &path)
{
    std::uint64_t number = 0xcbf29ce484222325U;
    for (const char c : path) {
        number ^= static_cast<unsigned char>(c);
        number *= 0x100000001b3U;
    }
    return number;
}

} // namespace

std::string stateFolder(const std::string &kind)
{
    const std::string home = environment::stateHome();
    return home.empty() ? home : home + "/veleditor/" + kind;
}

std::string canonicalPath(const std::string &file)
{
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(file, error);
    const std::filesystem::path path = std::filesystem::weakly_canonical(whole, error);
    return error ? whole.string() : path.string();
}

std::string stateNameOf(const std::string &path)
{
    char number[2 * sizeof(std::uint64_t) + 1];
    std::snprintf(number, sizeof number, "%016llx",
                  static_cast<unsigned long long>(pathNumber(path)));
    return std::filesystem::path(path).filename().string().substr(0, longestName) + '-' + number;
}

void makePrivateFolder(const std::string &folder)
{
    if (mkdir(folder.c_str(), ownerOnly) == 0) {
        return;
    }
    const int error = errno;
    const std::filesystem::path parent = std::filesystem::path(folder).parent_path();
    if (error == ENOENT && !parent.empty() && parent != folder) {
        std::error_code unknown;
        if (!std::filesystem::exists(parent, unknown)) {
            makePrivateFolder(parent.string());
        }
        if (mkdir(folder.c_str(), ownerOnly) == 0) {
            return;
        }
    }
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0) {
        throw systemError(folder, error);
    }
    if (!S_ISDIR(status.st_mode)) {
        throw systemError(folder, ENOTDIR);
    }
    if ((status.st_mode & othersBits) != 0 && chmod(folder.c_str(), ownerOnly) != 0) {
        throw systemError(folder, errno);
    }
}

} // namespace veltext
