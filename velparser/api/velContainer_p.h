// Command data inside a solver's definition and result files.
#pragma once

#include "velparser/api/perl_p.h"

namespace velparser {

/// Appends the command lines of a def or res file to `lines`, each with its
/// line end. 0, or the container library's code (io_codes.h) of what failed; what
/// failed is said on standard output, the library's own messages on standard
/// error. Uses the library's primary file.
[[nodiscard]] int load_vel_from_def(const char *file, AV *lines);

} // namespace velparser
