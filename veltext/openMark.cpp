// Makes, reads and removes the marks of open files.
#include "veltext/openMark.h"

#include "veltext/error.h"
#include "veltext/hostName.h"
#include "veltext/readFile.h"
#include "veltext/stateFolder.h"
#include "veltext/writeAll.h"

#include <algorithm>
#include <charconv>

#include <unistd.h>

namespace veltext {

namespace {

/// Of "PROCESS HOST" and a line feed.
FileUser userIn(const std::string &text)
{
    FileUser user;
    const auto [stop, error] =
        std::from_chars(text.data(), text.data() + text.size(), user.process);
    if (error == std::errc() && stop != text.data() + text.size()) {
        user.host.assign(stop + 1, text.data() + text.size());
        user.host.erase(std::min(user.host.find('\n'), user.host.size()));
    }
    return user;
}

std::string newFolder()
{
    std::string folder = stateFolder("open");
    if (folder.empty()) {
        throw Error("neither XDG_STATE_HOME nor HOME names a folder");
    }
    return folder;
}

} // namespace

OpenMark::OpenMark(const std::string &file)
    : file_(OwnedFile::create(newFolder(), stateNameOf(canonicalPath(file))))
{
    const std::string text = std::to_string(getpid()) + ' ' + hostName() + '\n';
    static_cast<void>(writeAll(file_.descriptor(), text)); // the lock says enough
}

OpenMark::~OpenMark()
{
    file_.remove();
}

std::vector<FileUser> OpenMark::usersOf(const std::string &file)
{
    std::vector<FileUser> users;
    const std::string folder = stateFolder("open");
    for (const std::string &path : ownedFiles(folder, stateNameOf(canonicalPath(file)))) {
        if (std::optional<OwnedFile> left = OwnedFile::take(path)) {
            left->remove();
            continue;
        }
        try {
            users.push_back(userIn(readBytes(path)));
        } catch (const Error &) {
            continue; // it is gone by now
        }
    }
    return users;
}

} // namespace veltext
