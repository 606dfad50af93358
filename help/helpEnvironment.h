// The environment variables that the help client reads, all of them here.
// docs/environment.md explains them.
#pragma once

#include <string>

namespace velEditor {

/// Where the help is and how its viewer is run. A variable that is absent gives
/// what its member says.
struct HelpEnvironment
{
    std::string folder;   ///< KOA_TEST_HELP_DIR, else ZOT_HELP_DIR, else empty
    std::string language; ///< QRP_LOCALE150, else "en-us"
    std::string runtime;  ///< ZOT5MONO: a program that runs the viewer, else empty
};
[[nodiscard]] HelpEnvironment readHelpEnvironment();

/// OMBHELP_SESSION_ID, else empty; read at each start of the viewer.
[[nodiscard]] std::string helpSessionId();

/// KOA_DEBUG_HELP: whether the talk with the viewer is printed.
[[nodiscard]] bool helpIsDebugged();

/// KOA_SOCKET_KEEP_INHERITABLE: whether programs that are started inherit
/// accepted connections.
[[nodiscard]] bool socketsAreInherited();

} // namespace velEditor
