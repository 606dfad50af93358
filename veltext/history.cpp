// Keeps, lists and reads the versions of a file.
//
// Keeping a version:
//
// 1. The folder is made and locked.
// 2. The index is read.
// 3. The file is compressed. If the last version has the same content, the new version
//    replaces it; if an older version has, the new one shares its object.
// 4. A new object is written.
// 5. The index is replaced, without the versions that are no longer kept.
// 6. Objects that the index does not name are removed.
//
// If the program is killed at any moment, all objects of the index exist.
#include "veltext/history.h"

#include "veltext/error.h"
#include "veltext/historyStore_p.h"
#include "veltext/retention_p.h"
#include "veltext/stateFolder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <exception>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltext {

namespace {

std::int64_t systemTime()
{
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

/// A regular file that is open for reading.
class OpenFile
{
public:
    /// Has no descriptor if the file is not a regular file. Throws an Error.
    explicit OpenFile(const std::string &file)
    {
        // A pipe must not make the program wait.
        descriptor_ = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor_ < 0 && errno != ENOENT) {
            throw systemError(file, errno);
        }
        struct stat status = {};
        if (descriptor_ >= 0 && (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode))) {
            close();
        }
    }
    ~OpenFile() { close(); }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    void close()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        descriptor_ = -1;
    }

    int descriptor_ = -1;
};

/// Whether an entry has the content of the new version.
bool hasContent(const HistoryStore &store, const HistoryEntry &entry, const VersionObject &version)
{
    if (entry.content != version.content || entry.size != version.size) {
        return false;
    }
    try {
        return haveSameContent(store.object(entry.object), version.bytes);
    } catch (const Error &) {
        return false; // it cannot be read
    }
}

} // namespace

History::History(const std::string &file) : History(file, stateFolder("history"), systemTime) {}

History::History(const std::string &file, std::string folder, Clock clock)
    : name_(file), path_(canonicalPath(file)), folder_(std::move(folder)), clock_(std::move(clock))
{
    if (!folder_.empty()) {
        folder_ += '/' + stateNameOf(path_);
    }
}

std::string History::keep(const std::string &program) const
{
    const auto message = [this](const std::string &reason) {
        return name_ + ": the history does not have the previous version: " + reason;
    };
    try {
        return keepOrThrow(program);
    } catch (const Error &error) {
        return message(error.message());
    } catch (const std::exception &error) {
        return message(error.what());
    }
}

std::string History::keepOrThrow(const std::string &program) const
{
    const OpenFile file(path_);
    if (file.descriptor() < 0) {
        return {};
    }
    if (folder_.empty()) {
        throw Error("neither XDG_STATE_HOME nor HOME names a folder");
    }
    makePrivateFolder(std::filesystem::path(folder_).parent_path().string());
    makePrivateFolder(folder_);
    const HistoryLock lock(folder_, true);
    const HistoryStore store(folder_);
    StoredVersions stored = store.load();
    std::vector<HistoryEntry> &entries = stored.entries;

    const std::int64_t now = clock_();
    const VersionObject version =
        compressVersion(file.descriptor(), path_, {now, program}, mostHistoryBytes);
    HistoryEntry entry = {now, version.size, version.bytes.size(), 0, version.content, program};
    const auto same =
        std::find_if(entries.rbegin(), entries.rend(),
                     [&](const HistoryEntry &other) { return hasContent(store, other, version); });
    if (same == entries.rend()) {
        entry.object = store.addObject(version.bytes);
    } else {
        entry.object = same->object;
        entry.stored = same->stored;
        if (same == entries.rbegin()) {
            entries.pop_back();
        }
    }
    entries.push_back(std::move(entry));
    expireVersions(&entries, now);
    store.save(path_, entries);
    return stored.faults.empty() ? std::string() : stored.faults.front();
}

VersionList History::list() const
{
    VersionList list;
    std::error_code error;
    if (folder_.empty() || !std::filesystem::exists(folder_, error)) {
        return list;
    }
    const HistoryLock lock(folder_, false);
    StoredVersions stored = HistoryStore(folder_).load();
    list.faults = std::move(stored.faults);
    for (auto entry = stored.entries.rbegin(); entry != stored.entries.rend(); ++entry) {
        list.versions.push_back({entry->time, entry->size, entry->program, entry->object});
    }
    return list;
}

std::string History::read(const Version &version) const
{
    const std::string object = HistoryStore(folder_).object(version.object);
    std::string bytes;
    const bool isWhole = expandVersion(object, nullptr, [&](std::string_view part) {
        bytes += part;
        return bytes.size() <= version.size;
    });
    if (!isWhole || bytes.size() != version.size) {
        throw Error(name_ + ": the version in " + folder_ + '/' + std::to_string(version.object) +
                    ".gz is damaged");
    }
    return bytes;
}

} // namespace veltext
