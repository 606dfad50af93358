// Finds the processes that have a file open, through /proc of Linux.
#include "tools/veltool/ds/fileHolders.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace veltool {

namespace {

namespace fs = std::filesystem;

enum class Look { Absent, Open, Hidden };

Look lookInto(const fs::path &process, const struct stat &file)
{
    std::error_code error;
    fs::directory_iterator entries(process / "fd", error);
    if (error) {
        return error == std::errc::permission_denied ? Look::Hidden : Look::Absent;
    }
    for (; entries != fs::directory_iterator(); entries.increment(error)) {
        struct stat open = {};
        if (stat(entries->path().c_str(), &open) == 0 && open.st_dev == file.st_dev &&
            open.st_ino == file.st_ino) {
            return Look::Open;
        }
    }
    return Look::Absent;
}

std::string programOf(const fs::path &process)
{
    std::ifstream in(process / "comm");
    std::string name;
    std::getline(in, name);
    return name;
}

bool isNumber(const std::string &text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](unsigned char c) { return std::isdigit(c) != 0; });
}

void sortOut(FileHolders &found)
{
    std::sort(found.holders.begin(), found.holders.end(),
              [](const FileHolder &a, const FileHolder &b) { return a.process < b.process; });
    std::sort(found.hiddenUsers.begin(), found.hiddenUsers.end());
    found.hiddenUsers.erase(std::unique(found.hiddenUsers.begin(), found.hiddenUsers.end()),
                            found.hiddenUsers.end());
}

} // namespace

FileHolders findHolders(const std::string &file)
{
    FileHolders found;
    std::error_code error;
    fs::directory_iterator processes("/proc", error);
    // Process 1 always exists. If it is not visible, other processes are hidden
    // too.
    found.known = !error && fs::exists("/proc/self/fd", error) && fs::exists("/proc/1", error);
    struct stat status = {};
    if (!found.known || stat(file.c_str(), &status) != 0) {
        return found;
    }
    const std::string self = std::to_string(getpid());
    for (; processes != fs::directory_iterator(); processes.increment(error)) {
        const fs::path process = processes->path();
        const std::string number = process.filename();
        if (!isNumber(number) || number == self) {
            continue;
        }
        const Look look = lookInto(process, status);
        struct stat owner = {};
        if (look == Look::Open) {
            found.holders.push_back({std::stol(number), programOf(process)});
        } else if (look == Look::Hidden && stat(process.c_str(), &owner) == 0) {
            found.hiddenUsers.push_back(owner.st_uid);
        }
    }
    sortOut(found);
    return found;
}

} // namespace veltool
