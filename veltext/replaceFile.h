// Writes files so that a complete file exists at every moment.
//
// New bytes go to a temporary file in the same folder and are flushed to the
// disk. Then the former file gets the second name FILE.bak, and the temporary
// file takes the name FILE in one step. FILE is always complete, old or new.
#pragma once

#include "veltext/fileLock.h"

#include <string>
#include <string_view>

namespace veltext {

/// What becomes of the bytes that a file had.
enum class Former {
    Backup, ///< they are kept as FILE.bak
    Drop,
};

/// A file that is changed in place.
class EditedFile
{
public:
    /// Create the object before you read the file: it waits for other programs
    /// that change the file, and locks it. Throws an Error for standard input, for
    /// a file that is not a regular one, and for a file that cannot be written.
    explicit EditedFile(const std::string &file);

    /// Replaces the bytes of the file. It keeps its permissions and, if the user
    /// has the right, its owner. A link is followed. Throws an Error and leaves
    /// the file unchanged if this fails, or if another program has changed the
    /// file since the object was created.
    void replace(std::string_view bytes, Former former = Former::Backup) const;

    /// As the caller gave it.
    [[nodiscard]] const std::string &name() const { return name_; }

    /// FILE.bak in the folder of the given name.
    [[nodiscard]] std::string backupName() const;

private:
    std::string name_;
    FileLock lock_;
};

/// Writes a file, which need not exist: through a temporary file, or directly
/// into a device or pipe. Throws an Error.
void writeFile(const std::string &file, std::string_view bytes);

} // namespace veltext
