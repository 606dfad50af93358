// Finds the processes of this machine that have a file open.
#pragma once

#include <string>
#include <vector>

namespace veltool {

/// A process that has the file open.
struct FileHolder
{
    long process = 0;
    std::string program; ///< the name that the system shows; may be empty
};

/// The result of a search.
struct FileHolders
{
    /// False if this system does not show which files its processes have open.
    bool known = false;

    std::vector<FileHolder> holders; ///< without this process, in the order of their numbers

    /// The numbers of the users whose processes cannot be seen by this process.
    std::vector<unsigned> hiddenUsers;
};

/// Finds the processes that have the file open; none for a missing file.
[[nodiscard]] FileHolders findHolders(const std::string &file);

} // namespace veltool
