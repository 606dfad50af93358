// A complete file under a name of its own, made before another file is
// overwritten: a copy of what that file holds, or the text that it is to hold.
#pragma once

#include <string>
#include <string_view>

namespace velEditor {

class SpareFile
{
public:
    /// Writes `bytes` beside `file`, or where that cannot be done to the user's
    /// own folder for such files. What has been written is synced, read again
    /// and compared. The file has the permissions of `file`, or belongs to the
    /// user alone if that is not a regular file.
    SpareFile(const std::string &file, std::string_view bytes);

    /// Removes the file unless it was kept.
    ~SpareFile();

    SpareFile(const SpareFile &) = delete;
    SpareFile &operator=(const SpareFile &) = delete;

    /// Whether all of it is on the disk. If not, there is no file.
    [[nodiscard]] bool isComplete() const { return !name_.empty(); }

    /// Why not, in the system's words.
    [[nodiscard]] const std::string &error() const { return error_; }

    /// Leaves the file where it is, and gives its name.
    std::string keep();

    /// Gives the file another name, in the place of a file that has it. False,
    /// and nothing is done, if the name is a folder's or on another disk.
    bool becomes(const std::string &name);

private:
    [[nodiscard]] bool write(const std::string &folder, const std::string &file,
                             std::string_view bytes);

    std::string name_; ///< empty: there is no file, or it is no longer ours
    std::string error_;
};

} // namespace velEditor
