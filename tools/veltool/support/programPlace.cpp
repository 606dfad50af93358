// Finds the Perl packages and rule libraries from the path of the executable.
#include "tools/veltool/support/programPlace.h"

#include "tools/veltool/support/environment.h"
#include "velapilt/src/velapilt.h"

#include <filesystem>
#include <sys/auxv.h>

namespace veltool {

namespace {

namespace fs = std::filesystem;

constexpr const char *installedData = "share/veleditor";
constexpr const char *startScript = "VEL/embeddedParserInit.pl";
constexpr const char *ruleLibraries[] = {"rules.vel", "upgrades.vel"};

/// The first of PREFIX/NAME and PREFIX/share/veleditor/NAME that contains `part`.
fs::path shippedFolder(const char *name, const char *part)
{
    const fs::path root = programFolder();
    for (const fs::path &folder : {root / name, root / installedData / name}) {
        std::error_code error;
        if (fs::exists(folder / part, error)) {
            return folder;
        }
    }
    return {};
}

/// The value of the variable, otherwise the shipped folder or files if they
/// exist.
std::optional<std::string> namedOr(const char *variable, const std::string &shipped)
{
    if (std::optional<std::string> named = environment::valueOf(variable)) {
        return named;
    }
    return shipped.empty() ? std::nullopt : std::optional<std::string>(shipped);
}

/// The libraries in the folder that ship with veltool, separated by ';'.
std::string libraryList(const fs::path &folder)
{
    std::string list;
    for (const char *name : ruleLibraries) {
        std::error_code error;
        if (fs::exists(folder / name, error)) {
            list.append(list.empty() ? "" : ";").append(name);
        }
    }
    return list;
}

} // namespace

std::string programFolder()
{
    std::error_code error;
    fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) { // without /proc: the name with which the system started the program
        program = fs::canonical(reinterpret_cast<const char *>(getauxval(AT_EXECFN)), error);
    }
    return error ? std::string() : program.parent_path().parent_path().string();
}

Places findPlaces()
{
    Places places;
    places.packages = namedOr(environment::packages, shippedFolder("perl", startScript).string());
    places.libraryFolder =
        namedOr(environment::libraryFolder, shippedFolder("libraries", ruleLibraries[0]).string());
    places.libraryList =
        namedOr(environment::libraryList,
                places.libraryFolder ? libraryList(*places.libraryFolder) : std::string());
    return places;
}

std::optional<velparser::LibraryNames> librariesOf(const Places &places)
{
    if (!places.libraryList) {
        return std::nullopt;
    }
    std::error_code error;
    const bool isThere = places.libraryFolder && fs::is_directory(*places.libraryFolder, error);
    return velparser::LibraryNames{.folder = isThere ? *places.libraryFolder : "./",
                                   .files = *places.libraryList};
}

std::vector<std::string> libraryFiles(const Places &places)
{
    const std::optional<velparser::LibraryNames> libraries = librariesOf(places);
    if (!libraries) {
        return {};
    }
    return velLibraryFiles(libraries->files.c_str(), libraries->folder.c_str());
}

std::vector<std::pair<std::string, std::string>> variablesOf(const Places &places)
{
    std::vector<std::pair<std::string, std::string>> variables;
    const auto add = [&](const char *name, const std::optional<std::string> &value) {
        if (value) {
            variables.emplace_back(name, *value);
        }
    };
    add(environment::packages, places.packages);
    add(environment::libraryFolder, places.libraryFolder);
    add(environment::libraryList, places.libraryList);
    return variables;
}

} // namespace veltool
