// Names and flushes the folder that a file is in.
#include "veltext/folder.h"

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace veltext {

std::string folderOf(const std::string &file)
{
    const std::string folder = std::filesystem::path(file).parent_path().string();
    return folder.empty() ? "." : folder;
}

void flushFolderOf(const std::string &file)
{
    const int descriptor = open(folderOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    // Some file systems refuse this. In that case nothing more can be done for
    // the data.
    static_cast<void>(fsync(descriptor));
    close(descriptor);
}

} // namespace veltext
