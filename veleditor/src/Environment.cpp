// Reads the environment variables of the editor.
#include "veleditor/src/Environment.h"

#include <cstdio>
#include <cstdlib>

namespace velEditor::environment {

namespace {

const char *featureVariable(const char *name)
{
    const char *value = std::getenv(name);
    if (value == nullptr)
        std::fprintf(stderr, "%s not set; some features will not be available\n", name);
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

std::string stateFolder()
{
    if (const char *given = std::getenv("XDG_STATE_HOME"); given != nullptr && *given == '/')
        return given;
    if (const char *home = std::getenv("HOME"); home != nullptr && *home == '/')
        return std::string(home) + "/.local/state";
    return {};
}

} // namespace velEditor::environment
