// A new file in the folder of another one, whose name it takes when it is complete.
#pragma once

#include <string>
#include <string_view>

#include <sys/stat.h>

namespace veltext {

/// The destructor removes the file unless it was renamed. Errors name the file
/// that is shown to the user.
class TemporaryFile
{
public:
    /// Creates it in the folder of `file`, so that it can take that name. Messages
    /// call it `shown`. Until it is filled, only the user can read it.
    TemporaryFile(const std::string &file, std::string shown);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    /// Its path until it is renamed.
    [[nodiscard]] const std::string &name() const { return name_; }

    /// Copies owner and group. Without the right to do so, the user stays the owner.
    void copyOwner(const struct stat &from) const;

    /// Writes all bytes, sets the permissions of `mode`, flushes the file to the
    /// disk and closes it.
    void fill(std::string_view bytes, mode_t mode);

    /// Gives the file the name `to`, in place of a file with that name.
    void rename(const std::string &to) const;

private:
    std::string shown_;
    std::string name_;
    int descriptor_ = -1; ///< owned; −1 after it was closed
};

} // namespace veltext
