// What the rule libraries state, in a database that holds a file's data too.
//
// A file that states a block of a library again makes the block the user's, and
// the database then takes all that is in it for the user's.
#pragma once

#include "velapilt/src/velapilt.h"

#include <string>
#include <vector>

namespace veltool {

class LibraryPart
{
public:
    /// For a handle that the libraries have been read into, and nothing else.
    /// Throws Failure where it cannot be asked.
    explicit LibraryPart(velHandle *handle);

    /// Whether a block at the top level is stated by a library and, in `handle`, by
    /// the user too.
    [[nodiscard]] bool isRestatedIn(velHandle *handle) const;

    /// Deletes from the user's blocks in `handle` what `own`, which has the same
    /// file and no library, does not have. Throws Failure where that fails.
    void dropFrom(velHandle *handle, velHandle *own) const;

private:
    std::vector<std::string> paths_; ///< of the libraries' blocks at the top level
};

} // namespace veltool
