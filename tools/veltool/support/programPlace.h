// Finds the files that ship with the program.
//
// The search starts at the folder bin/ of the running executable. In a build tree,
// perl/ and libraries/ are beside it; in an installed prefix, they are in
// share/veleditor/.
#pragma once

#include "velparser/api/velSession.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace veltool {

/// The folder above bin/; empty if the system does not give the path of the program.
[[nodiscard]] std::string programFolder();

/// The folders of the Perl packages and the rule libraries. A member has no value if
/// the environment does not name it and none ships with the program.
struct Places
{
    std::optional<std::string> packages;      ///< the folder of the packages
    std::optional<std::string> libraryFolder; ///< as it was named; it need not exist
    std::optional<std::string> libraryList;   ///< names, separated by ';'
};

/// What the environment names, otherwise what ships with the program.
[[nodiscard]] Places findPlaces();

/// The libraries to read. Without a list there are none, and reading libraries then
/// gives the message that names the variable.
[[nodiscard]] std::optional<velparser::LibraryNames> librariesOf(const Places &places);

/// The files of these libraries, in the order of reading. Throws bad_alloc.
[[nodiscard]] std::vector<std::string> libraryFiles(const Places &places);

/// The environment variables that name these places, with their values.
[[nodiscard]] std::vector<std::pair<std::string, std::string>> variablesOf(const Places &places);

} // namespace veltool
