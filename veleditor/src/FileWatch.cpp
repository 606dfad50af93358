// What is watched, and what is found.
#include "veleditor/src/FileWatch.h"

#include <QFile>

#include <filesystem>
#include <memory>
#include <set>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velEditor {

namespace {

namespace fs = std::filesystem;

/// Programs change a file in several steps; this many milliseconds later it is seldom
/// between two of them.
constexpr int delay = 100;

/// As many links as the system follows.
constexpr int mostLinks = 40;

/// The folder of a file or, if that is not there, the nearest one above.
std::string folderOf(const fs::path &file)
{
    fs::path folder = file.parent_path();
    std::error_code unknown;
    while (!fs::is_directory(folder, unknown) && folder != folder.parent_path()) {
        folder = folder.parent_path();
    }
    return folder.string();
}

/// The folders in which a change can put another file at a path: that of the path, and
/// those of the links that lead from it to the file.
std::set<std::string> foldersOf(const std::string &file)
{
    std::set<std::string> folders;
    fs::path path = file;
    for (int i = 0; i < mostLinks; ++i) {
        folders.insert(folderOf(path));
        std::error_code isNoLink;
        const fs::path target = fs::read_symlink(path, isNoLink);
        if (isNoLink) {
            break;
        }
        path = path.parent_path() / target;
    }
    return folders;
}

std::string absolutePath(const std::string &file)
{
    std::error_code failure;
    const fs::path path = fs::absolute(file, failure);
    return failure ? file : path.string();
}

/// Another name in the folder of a file that had this stamp, as a path; empty if no
/// name has that file.
std::string newPathOf(const std::string &file, const FileStamp &stamp)
{
    const std::string folder = fs::path(file).parent_path().string();
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(::opendir(folder.c_str()), &::closedir);
    while (const dirent *entry = entries != nullptr ? ::readdir(entries.get()) : nullptr) {
        if (entry->d_ino != stamp.inode) {
            continue;
        }
        std::string path = (fs::path(folder) / entry->d_name).string();
        FileStamp moved = statusOf(path).stamp;
        moved.touched = stamp.touched; // a new name counts as a change of the file
        if (moved == stamp) {
            return path;
        }
    }
    return {};
}

} // namespace

FileWatch::FileWatch(const std::string &file, QObject *parent)
    : QObject(parent), file_(absolutePath(file))
{
    soon_.setSingleShot(true);
    soon_.setInterval(delay);
    connect(&soon_, &QTimer::timeout, this, &FileWatch::check);
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &FileWatch::checkSoon);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &FileWatch::checkSoon);
}

void FileWatch::expect(std::shared_ptr<FileVersion> version)
{
    version_ = std::move(version);
    watchAgain();
    report({});
    checkSoon();
}

void FileWatch::checkSoon()
{
    if (!soon_.isActive()) {
        soon_.start();
    }
}

// Watching comes first: what changes after the comparison causes another one.
void FileWatch::check()
{
    watchAgain();
    if (version_ != nullptr) {
        report(look());
    }
}

void FileWatch::report(Found now)
{
    if (now == found_) {
        return;
    }
    found_ = std::move(now);
    emit noticed(found_.state);
}

FileWatch::Found FileWatch::look() const
{
    const FileVersion::Comparison comparison = version_->compare(file_);
    switch (comparison.match) {
    case FileVersion::Match::Same:
        return {};
    case FileVersion::Match::Other:
        return {State::Changed, {}, comparison.hash};
    case FileVersion::Match::Unknown:
        return found_;
    case FileVersion::Match::Missing:
        break;
    }
    std::string path = version_->stamp() ? newPathOf(file_, *version_->stamp()) : std::string();
    return {path.empty() ? State::Removed : State::Moved, path, 0};
}

// --- What is watched ------------------------------------------------------------

void FileWatch::watchAgain()
{
    std::set<std::string> wanted;
    if (version_ != nullptr) {
        wanted = foldersOf(file_);
        wanted.insert(file_);
    }
    for (auto watched = watched_.begin(); watched != watched_.end();) {
        if (wanted.count(watched->first) > 0) {
            ++watched;
            continue;
        }
        unwatch(watched->first);
        watched = watched_.erase(watched);
    }
    for (const std::string &path : wanted) {
        watch(path);
    }
}

/// Watches what is at a path now, which may be another file than before. What may not
/// be read cannot be watched.
void FileWatch::watch(const std::string &path)
{
    struct stat found = {};
    if (::stat(path.c_str(), &found) != 0 || ::access(path.c_str(), R_OK) != 0) {
        return;
    }
    const Identity identity(found.st_dev, found.st_ino);
    const QString name = QFile::decodeName(path.c_str());
    const bool isWatched = watcher_.files().contains(name) || watcher_.directories().contains(name);
    if (isWatched && watched_[path] == identity) {
        return;
    }
    if (isWatched) {
        watcher_.removePath(name);
    }
    watcher_.addPath(name);
    watched_[path] = identity;
}

void FileWatch::unwatch(const std::string &path)
{
    const QString name = QFile::decodeName(path.c_str());
    if (watcher_.files().contains(name) || watcher_.directories().contains(name)) {
        watcher_.removePath(name);
    }
}

} // namespace velEditor
