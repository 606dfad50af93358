// Command data inside a solver's definition and result files.
#pragma once

#include "velparser/api/perl_p.h"

namespace velparser {

/// Appends the command lines of a def or res file to `lines`, each with its
/// line end. 0, or the code of what failed.
[[nodiscard]] int load_vel_from_def(const char *file, AV *lines);

} // namespace velparser
