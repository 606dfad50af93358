// Reads the environment variables of the help client.
#include "help/helpEnvironment.h"

#include <cstdlib>

namespace velEditor {

namespace {

std::string variable(const char *name, const std::string &absent)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : absent;
}

} // namespace

HelpEnvironment readHelpEnvironment()
{
    return {variable("KOA_TEST_HELP_DIR", variable("ZOT_HELP_DIR", "")),
            variable("QRP_LOCALE150", "en-us"), variable("ZOT5MONO", "")};
}

std::string helpSessionId()
{
    return variable("OMBHELP_SESSION_ID", "");
}

bool helpIsDebugged()
{
    return std::getenv("KOA_DEBUG_HELP") != nullptr;
}

bool socketsAreInherited()
{
    return std::getenv("KOA_SOCKET_KEEP_INHERITABLE") != nullptr;
}

} // namespace velEditor
