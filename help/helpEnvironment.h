// Reads all environment variables of the help client. docs/environment.md
// explains them.
#pragma once

#include <string>

namespace velEditor {

/// Where the help is and how its viewer is started. Each member names its
/// variable and the value used if the variable is absent.
struct HelpEnvironment
{
    std::string folder;   ///< KOA_TEST_HELP_DIR, otherwise ZOT_HELP_DIR, otherwise empty
    std::string language; ///< QRP_LOCALE150, otherwise "en-us"
    std::string runtime;  ///< ZOT5MONO: a program that runs the viewer, otherwise empty
};
[[nodiscard]] HelpEnvironment readHelpEnvironment();

/// OMBHELP_SESSION_ID, otherwise empty; read at each start of the viewer.
[[nodiscard]] std::string helpSessionId();

/// KOA_DEBUG_HELP: whether the communication with the viewer is printed.
[[nodiscard]] bool helpIsDebugged();

/// KOA_SOCKET_KEEP_INHERITABLE: whether child processes inherit accepted
/// connections.
[[nodiscard]] bool socketsAreInherited();

} // namespace velEditor
