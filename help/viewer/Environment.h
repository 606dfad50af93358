// Reads all environment variables of the viewer. docs/environment.md explains
// them. An absent variable gives an empty text.
#pragma once

#include <QString>

namespace velHelp::environment {

/// KOA_TEST_HELP_DIR: the folder of the pages; overrides ZOT_HELP_DIR.
[[nodiscard]] QString testHelpFolder();

/// ZOT_HELP_DIR: the folder of the pages.
[[nodiscard]] QString helpFolder();

/// ZOT5ROOT: the folder that holds etc/icons/.
[[nodiscard]] QString rootFolder();

/// KOA_DEBUG_HELP: whether the communication with clients is printed.
[[nodiscard]] bool isDebugged();

} // namespace velHelp::environment
