// Command data inside a solver's definition and result files.
#pragma once

#include "velparser/api/perl_p.h"

namespace velparser {

/// Appends the command lines of a def or res file to `lines`, each with its line end.
/// Returns 0, or the code of the container library (io_codes.h) for the failure. Standard
/// output then says what failed, and standard error has the messages of the library. Uses
/// the library's primary file.
[[nodiscard]] int load_vel_from_def(const char *file, AV *lines);

} // namespace velparser
