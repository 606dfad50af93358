// Writing files so that nobody is ever left without a complete one.
//
// New bytes go to a temporary file in the same folder, are flushed to the disk
// and take the file's name in one step. The former file is kept as FILE.bak
// before that step, so that at every moment FILE is whole, old or new.
#pragma once

#include "veltext/fileLock.h"

#include <string>
#include <string_view>

namespace veltext {

/// A file that is going to be changed in place.
class EditedFile
{
public:
    /// Make it before the file is read: it waits for other programs that change
    /// the file, and locks it. Throws an Error for what cannot be changed:
    /// standard input, not a regular file, no right to write.
    explicit EditedFile(const std::string &file);

    /// Gives the file these bytes; permissions and, where the user may, owner
    /// stay. A link is followed. Throws an Error; the file is then as before,
    /// as it is when somebody else has changed it since it was opened here.
    void replace(std::string_view bytes) const;

    /// FILE.bak, beside the name as given.
    [[nodiscard]] std::string backupName() const;

private:
    std::string name_; ///< as given
    FileLock lock_;
};

/// Writes a file that need not exist: through a temporary one, or straight
/// into what is not a regular file (a device, a pipe). Throws an Error.
void writeFile(const std::string &file, std::string_view bytes);

} // namespace veltext
