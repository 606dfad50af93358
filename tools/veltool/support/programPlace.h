// Where the parts that ship with the program stand.
//
// They are found from the place of the running executable: bin/ of a build
// tree, with perl/ and libraries/ beside it, or of an installed prefix, with
// share/veleditor/perl and share/veleditor/libraries.
#pragma once

#include <string>

namespace veltool {

/// The folder above bin/; empty when the system does not tell.
[[nodiscard]] std::string programFolder();

/// Sets ZOT5_VEL_PARSER, ZOT5_VEL_LIBSDIR and ZOT5_VEL_LIBS to what ships with
/// the program, each only where the environment does not name it.
void completeEnvironment();

} // namespace veltool
