// The environment variables that veltool reads, all of them here.
// docs/environment.md explains them.
#pragma once

#include <optional>
#include <string>

namespace veltool::environment {

/// The names of those that say where the Perl side and the rules are.
inline constexpr const char *packages = "ZOT5_VEL_PARSER";
inline constexpr const char *libraryFolder = "ZOT5_VEL_LIBSDIR";
inline constexpr const char *libraryList = "ZOT5_VEL_LIBS";

/// The value of one of these variables; none if it is not set.
[[nodiscard]] std::optional<std::string> valueOf(const char *variable);

/// The folder of the user's settings: XDG_CONFIG_HOME, otherwise .config in HOME;
/// empty if neither is set to a text.
[[nodiscard]] std::string settingsFolder();

} // namespace veltool::environment
