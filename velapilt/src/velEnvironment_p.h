// All environment variables that the database reads. docs/environment.md explains them. The
// result is null if a variable is not set; the text belongs to the environment.
#pragma once

/// ZOT5_VEL_LIBSDIR: the folder of the rule libraries.
[[nodiscard]] const char *velEnvLibraryFolder();

/// ZOT5_VEL_LIBS: the names of the rule libraries, separated by ';'.
[[nodiscard]] const char *velEnvLibraryList();

/// ZOT_VELAPI_DEBUG: whether errors and the path stack are traced.
[[nodiscard]] bool velEnvDebugging();
