// Finds the library files that the environment names, and reads them.
#include "velapilt/src/velEnvironment_p.h"
#include "velapilt/src/velError_p.h"
#include "velapilt/src/velFile_p.h"

#include <cstdlib>
#include <filesystem>
#include <new>

namespace {

constexpr const char *noMemory = "readNamedLibraries: unable to allocate the fullPath string\n";
constexpr const char *noItem = "readNamedLibraries: unable to allocate a library item string\n";

bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

bool isDirectory(std::string name)
{
    if (name.size() > 1 && isSeparator(name.back())) {
        name.pop_back(); // the root directory is only a separator, and keeps it
    }
    std::error_code error;
    return std::filesystem::is_directory(name, error);
}

/// ZOT5_VEL_LIBSDIR if it names a directory, otherwise `otherwise`.
std::string libraryDirectory(const char *otherwise)
{
    const char *given = velEnvLibraryFolder();
    return given != nullptr && isDirectory(given) ? given : otherwise;
}

/// The folder that a caller names, otherwise the folder from the environment.
std::string chosenFolder(const char *directory)
{
    return directory == nullptr || *directory == '\0' ? libraryDirectory("") : directory;
}

/// Whether an item of the list is used as it is: ".…", "/…", "C:/…".
bool standsAlone(std::string_view item)
{
    if (item.empty()) {
        return false;
    }
    if (item[0] == '.' || isSeparator(item[0])) {
        return true;
    }
    const bool isLetter = (item[0] >= 'A' && item[0] <= 'Z') || (item[0] >= 'a' && item[0] <= 'z');
    return isLetter && item.size() > 2 && item[1] == ':' && isSeparator(item[2]);
}

/// Copies the text of an item; false without memory.
bool takeItem(std::string_view text, std::string *item)
try {
    *item = text;
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

/// Calls `visit` with the path of each item of a list, until one returns a
/// message.
template <typename Visit>
const char *eachLibrary(std::string_view list, const std::string &folder, Visit visit)
{
    const std::string prefix = folder + '/';
    std::string_view rest = list;
    while (!rest.empty()) {
        if (rest[0] == ':' || rest[0] == ';') {
            rest.remove_prefix(1);
            if (rest.empty()) {
                break; // an empty text after the last ';' is not an item
            }
        }
        std::string item;
        if (!takeItem(rest.substr(0, rest.find(';')), &item)) {
            return noItem;
        }
        const std::string path = (standsAlone(item) ? "" : prefix) + item;
        if (const char *error = visit(path)) {
            return error;
        }
        rest.remove_prefix(item.size());
    }
    return nullptr;
}

const char *readLibrary(velHandle *handle, const std::string &path)
{
    velFileBytes bytes;
    const char *error = velReadFile(handle, path.c_str(), &bytes);
    if (error == nullptr) {
        error = velParseFile(handle, bytes, velFlagLibrary, nullptr, nullptr);
    }
    return error == nullptr
               ? nullptr
               : velSetError(handle, "Error reading library file %s: %s", path.c_str(), error);
}

} // namespace

const char *readLibraries(velHandle *handle)
try {
    const char *list = velEnvLibraryList();
    if (list == nullptr) {
        return "Error: No library files specified by $ZOT5_VEL_LIBS. No libraries were read.\n";
    }
    return readNamedLibraries(handle, list, libraryDirectory("./").c_str());
} catch (const std::bad_alloc &) {
    return noMemory;
}

std::vector<std::string> velLibraryFiles()
{
    return velLibraryFiles(velEnvLibraryList(), libraryDirectory("./").c_str());
}

std::vector<std::string> velLibraryFiles(const char *list, const char *directory)
{
    std::vector<std::string> files;
    const std::string folder = chosenFolder(directory);
    if (list == nullptr || !isDirectory(folder)) {
        return files;
    }
    const auto add = [&files](const std::string &path) -> const char * {
        files.push_back(path);
        return nullptr;
    };
    if (eachLibrary(list, folder, add) != nullptr) {
        throw std::bad_alloc();
    }
    return files;
}

const char *readNamedLibraries(velHandle *handle, const char *list, const char *directory)
try {
    const std::string folder = chosenFolder(directory);
    if (!isDirectory(folder)) {
        return "readNamedLibraries: unable to find a valid lib directory\n";
    }
    const std::string copy(list == nullptr ? "" : list);
    return eachLibrary(copy, folder,
                       [handle](const std::string &path) { return readLibrary(handle, path); });
} catch (const std::bad_alloc &) {
    return noMemory;
}
