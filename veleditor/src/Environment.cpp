// Reads the environment variables of the editor.
#include "veleditor/src/Environment.h"

#include <cstdio>
#include <cstdlib>

namespace velEditor::environment {

namespace {

const char *featureVariable(const char *name)
{
    const char *value = std::getenv(name);
    if (value == nullptr) {
        std::fprintf(stderr, "%s not set; some features will not be available\n", name);
    }
    return value;
}

} // namespace

const char *rootFolder()
{
    return featureVariable("ZOT5ROOT");
}

const char *buildName()
{
    return featureVariable("ZOTBUILDID");
}

bool showsLibrary()
{
    return std::getenv("VELEDITOR_SHOW_LIBRARY") != nullptr;
}

bool showsExpertItems()
{
    return std::getenv("ZOT5_VEL_EXPERT") != nullptr;
}

std::string configHome()
{
    const char *given = std::getenv("XDG_CONFIG_HOME");
    if (given != nullptr && *given == '/') {
        return given;
    }
    const char *home = std::getenv("HOME");
    return home != nullptr && *home == '/' ? std::string(home) + "/.config" : std::string();
}

} // namespace velEditor::environment
