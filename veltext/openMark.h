// Says to other editors that a file is open in one.
//
//     $XDG_STATE_HOME/veleditor/open/NAME of the file.PROCESS
//
// The mark is a file that the process owns (ownedFile.h) and removes at its end. What
// a killed process has left is removed by the next one.
#pragma once

#include "veltext/ownedFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace veltext {

/// A process that has a file open.
struct FileUser
{
    std::uint32_t process = 0;
    std::string host;
};

class OpenMark
{
public:
    /// Marks the file as open as long as the object lives. Throws an Error.
    explicit OpenMark(const std::string &file);
    ~OpenMark();
    OpenMark(const OpenMark &) = delete;
    OpenMark &operator=(const OpenMark &) = delete;

    /// Who has the file open; to be called before the caller marks it.
    [[nodiscard]] static std::vector<FileUser> usersOf(const std::string &file);

private:
    OwnedFile file_;
};

} // namespace veltext
