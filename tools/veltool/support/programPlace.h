// Finds the files that ship with the program.
//
// The search starts at the folder bin/ of the running executable. In a build tree,
// perl/ and libraries/ are beside it; in an installed prefix, they are in
// share/veleditor/.
#pragma once

#include <string>

namespace veltool {

/// The folder above bin/; empty if the system does not give the path of the program.
[[nodiscard]] std::string programFolder();

/// Sets ZOT5_VEL_PARSER, ZOT5_VEL_LIBSDIR and ZOT5_VEL_LIBS to the shipped files.
/// A variable that is already set does not change.
void completeEnvironment();

} // namespace veltool
