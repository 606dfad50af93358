// A new file beside another one, whose name it is going to take.
#pragma once

#include <string>
#include <string_view>

#include <sys/stat.h>

namespace veltext {

/// Removed at the end of its life unless it was given its final name. Failures
/// are thrown as an Error that calls the file by the name shown to the user.
class TemporaryFile
{
public:
    /// In the folder of `file`, so that it can take its name; messages call it
    /// `shown`. Readable by the user alone until it is filled.
    TemporaryFile(const std::string &file, std::string shown);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    /// Its path until it is renamed.
    [[nodiscard]] const std::string &name() const { return name_; }

    /// As far as the user may; without the right the file becomes his own.
    void copyOwner(const struct stat &from) const;

    /// Writes everything, gives the file the permissions of `mode`, flushes it
    /// to the disk and closes it.
    void fill(std::string_view bytes, mode_t mode);

    /// Takes the place of what has the name `to`.
    void rename(const std::string &to) const;

private:
    std::string shown_;
    std::string name_;
    int descriptor_ = -1; ///< owned; −1 once it is closed
};

} // namespace veltext
