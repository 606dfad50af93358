// A complete file with a new name, made before another file is overwritten: a copy of
// that file's content, or its new text.
#pragma once

#include <string>
#include <string_view>

namespace velEditor {

class SpareFile
{
public:
    /// Writes `bytes` next to `file` or, if that fails, to the user's folder for such
    /// files. Syncs the spare file, reads it again and compares it. It gets the
    /// permissions of `file`; if `file` is not a regular file, only the user may read
    /// it.
    SpareFile(const std::string &file, std::string_view bytes);

    /// Deletes the file unless `keep` was called.
    ~SpareFile();

    SpareFile(const SpareFile &) = delete;
    SpareFile &operator=(const SpareFile &) = delete;

    /// Whether all bytes are on the disk. If not, the file does not exist.
    [[nodiscard]] bool isComplete() const { return !name_.empty(); }

    /// Why the file is not complete: the system's message.
    [[nodiscard]] const std::string &error() const { return error_; }

    /// Keeps the file in its place and returns its name.
    std::string keep();

    /// Renames the file, replacing an existing file. False, without a change, if
    /// `name` is a folder or on another disk.
    bool becomes(const std::string &name);

private:
    [[nodiscard]] bool write(const std::string &folder, const std::string &file,
                             std::string_view bytes);

    std::string name_; ///< empty if there is no file or it was kept
    std::string error_;
};

} // namespace velEditor
