// The environment variables that the bridge reads, or passes to Perl code.
// docs/environment.md explains them.
#pragma once

namespace velparser {

/// They name rule libraries; the database reads them.
inline constexpr const char *libraryFolderVariable = "ZOT5_VEL_LIBSDIR";
inline constexpr const char *libraryListVariable = "ZOT5_VEL_LIBS";

/// ZOT5_VEL_PARSER: the folder of the Perl packages. Null if it is not set. The text
/// belongs to the environment.
[[nodiscard]] const char *packagesOfEnvironment();

} // namespace velparser
