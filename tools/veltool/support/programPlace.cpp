// Finds the Perl packages and rule libraries from the path of the executable.
#include "tools/veltool/support/programPlace.h"

#include <cstdlib>
#include <filesystem>
#include <string>
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
        if (fs::exists(folder / part, error))
            return folder;
    }
    return {};
}

void setUnlessNamed(const char *variable, const std::string &value)
{
    if (!value.empty())
        setenv(variable, value.c_str(), 0);
}

/// The shipped libraries that are in the folder, separated by ';'.
std::string libraryList(const fs::path &folder)
{
    std::string list;
    for (const char *name : ruleLibraries) {
        std::error_code error;
        if (fs::exists(folder / name, error))
            list.append(list.empty() ? "" : ";").append(name);
    }
    return list;
}

} // namespace

std::string programFolder()
{
    std::error_code error;
    fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) // without /proc: the name with which the system started the program
        program = fs::canonical(reinterpret_cast<const char *>(getauxval(AT_EXECFN)), error);
    return error ? std::string() : program.parent_path().parent_path().string();
}

void completeEnvironment()
{
    setUnlessNamed("ZOT5_VEL_PARSER", shippedFolder("perl", startScript).string());
    setUnlessNamed("ZOT5_VEL_LIBSDIR", shippedFolder("libraries", ruleLibraries[0]).string());
    if (const char *folder = std::getenv("ZOT5_VEL_LIBSDIR"))
        setUnlessNamed("ZOT5_VEL_LIBS", libraryList(folder));
}

} // namespace veltool
