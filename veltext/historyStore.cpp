// Reads and writes the files in the folder of a history.
#include "veltext/historyStore_p.h"

#include "veltext/error.h"
#include "veltext/readFile.h"
#include "veltext/temporaryFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <zlib.h>

namespace veltext {

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownerOnly = 0600;
constexpr const char *indexName = "index";
constexpr const char *lockName = "lock";
constexpr std::string_view objectEnding = ".gz";

constexpr std::chrono::seconds longestWait(10);
constexpr std::chrono::milliseconds pause(10);

/// The number in the name of an object; 0 for another name.
std::uint64_t numberIn(const std::string &name)
{
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool isObject = error == std::errc() && name.substr(stop - name.data()) == objectEnding;
    return isObject ? number : 0;
}

bool isTemporary(const std::string &name)
{
    return name.starts_with(".veltool-");
}

std::vector<std::string> namesIn(const std::string &folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    return names;
}

/// The entry of an object that the index does not name; `size` is the size of its file. The
/// number in the entry is 0 if the object is damaged.
HistoryEntry entryOf(std::uint64_t number, std::string_view object)
{
    HistoryEntry entry = {};
    entry.stored = object.size();
    ObjectHeader header;
    const bool isWhole = expandVersion(object, &header, [&](std::string_view part) {
        entry.size += part.size();
        entry.content = static_cast<std::uint32_t>(
            crc32_z(entry.content, reinterpret_cast<const Bytef *>(part.data()), part.size()));
        return true;
    });
    entry.object = isWhole ? number : 0;
    entry.time = header.time;
    entry.program = header.program;
    return entry;
}

} // namespace

HistoryLock::HistoryLock(const std::string &folder, bool mustHold)
{
    const std::string name = folder + '/' + lockName;
    descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, ownerOnly);
    if (descriptor_ < 0 && mustHold) {
        throw systemError(name, errno);
    }
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        const bool isBusy = errno == EWOULDBLOCK || errno == EINTR;
        // If the file system has no locks, nothing is locked.
        if (!isBusy) {
            return;
        }
        if (std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(pause);
            continue;
        }
        if (!mustHold) {
            return;
        }
        close(descriptor_);
        throw Error(name, 0, "another program has held the lock for too long");
    }
}

HistoryLock::~HistoryLock()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

StoredVersions HistoryStore::load() const
{
    StoredVersions stored;
    const std::string name = folder_ + '/' + indexName;
    std::error_code error;
    const bool exists = fs::exists(name, error);
    HistoryIndex index = parseIndex(exists ? readBytes(name) : "", name);
    stored.entries = std::move(index.entries);
    if (!index.isWhole && (exists || !objectNumbers().empty())) {
        stored.faults.push_back(name + ": " + (exists ? "is damaged" : "is missing") +
                                "; the versions in it are taken from the files beside it");
    }
    dropMissing(&stored);
    if (!index.isWhole) {
        adoptObjects(&stored);
    }
    return stored;
}

std::string HistoryStore::object(std::uint64_t number) const
{
    return readBytes(objectName(number));
}

std::uint64_t HistoryStore::addObject(std::string_view bytes) const
{
    const std::vector<std::uint64_t> numbers = objectNumbers();
    const std::uint64_t number = numbers.empty() ? 1 : numbers.back() + 1;
    const std::string name = objectName(number);
    TemporaryFile temporary(name, name);
    temporary.fill(bytes, ownerOnly);
    temporary.rename(name);
    return number;
}

void HistoryStore::save(const std::string &file, const std::vector<HistoryEntry> &entries) const
{
    const std::string name = folder_ + '/' + indexName;
    TemporaryFile temporary(name, name);
    temporary.fill(indexText(file, entries), ownerOnly);
    temporary.rename(name);
    removeUnnamed(entries);
}

std::string HistoryStore::objectName(std::uint64_t number) const
{
    return folder_ + '/' + std::to_string(number) + std::string(objectEnding);
}

std::vector<std::uint64_t> HistoryStore::objectNumbers() const
{
    std::vector<std::uint64_t> numbers;
    for (const std::string &name : namesIn(folder_)) {
        if (const std::uint64_t number = numberIn(name)) {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

/// Removes entries whose object is missing or has another size.
void HistoryStore::dropMissing(StoredVersions *stored) const
{
    std::set<std::uint64_t> reported;
    std::erase_if(stored->entries, [&](const HistoryEntry &entry) {
        const std::string name = objectName(entry.object);
        std::error_code error;
        const std::uintmax_t size = fs::file_size(name, error);
        if (!error && size == entry.stored) {
            return false;
        }
        if (reported.insert(entry.object).second) {
            stored->faults.push_back(name + ": " + (error ? "is missing" : "is damaged") +
                                     "; the version in it is lost");
        }
        return true;
    });
}

/// Makes versions from the objects that a damaged index does not name. They were kept in the
/// order of their numbers.
void HistoryStore::adoptObjects(StoredVersions *stored) const
{
    std::set<std::uint64_t> named;
    for (const HistoryEntry &entry : stored->entries) {
        named.insert(entry.object);
    }
    for (const std::uint64_t number : objectNumbers()) {
        if (named.contains(number)) {
            continue;
        }
        const HistoryEntry entry = entryOf(number, object(number));
        if (entry.object == 0) {
            stored->faults.push_back(objectName(number) +
                                     ": is damaged; the version in it is lost");
            continue;
        }
        const auto later =
            std::find_if(stored->entries.begin(), stored->entries.end(),
                         [number](const HistoryEntry &other) { return other.object > number; });
        stored->entries.insert(later, entry);
    }
}

void HistoryStore::removeUnnamed(const std::vector<HistoryEntry> &entries) const
{
    std::set<std::uint64_t> named;
    for (const HistoryEntry &entry : entries) {
        named.insert(entry.object);
    }
    for (const std::string &name : namesIn(folder_)) {
        const std::uint64_t number = numberIn(name);
        if (number ? !named.contains(number) : isTemporary(name)) {
            unlink((folder_ + '/' + name).c_str());
        }
    }
}

} // namespace veltext
