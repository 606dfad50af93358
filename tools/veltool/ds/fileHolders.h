// Which processes of this machine have a file open.
#pragma once

#include <string>
#include <vector>

namespace veltool {

/// A process that has the file open.
struct FileHolder
{
    long process = 0;
    std::string program; ///< as the system names it; may be empty
};

/// All that could be found out.
struct FileHolders
{
    /// False if this system does not say which files its processes have open.
    bool known = false;

    std::vector<FileHolder> holders; ///< by process number; this process is not among them

    /// Users, as numbers, with processes that this one may not look into.
    std::vector<unsigned> hiddenUsers;
};

/// Nobody holds a file that does not exist.
[[nodiscard]] FileHolders findHolders(const std::string &file);

} // namespace veltool
