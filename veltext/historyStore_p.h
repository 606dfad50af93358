// The folder of a history: its index, its objects and its lock.
#pragma once

#include "veltext/historyIndex_p.h"
#include "veltext/versionObject_p.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veltext {

/// Holds the lock of a history for as long as the object lives.
class HistoryLock
{
public:
    /// Waits for another program, 10 seconds at most. If it does not get the lock, it
    /// throws an Error with `mustHold`; without `mustHold` it continues, because everything
    /// that is read is checked anyway.
    HistoryLock(const std::string &folder, bool mustHold);
    ~HistoryLock();
    HistoryLock(const HistoryLock &) = delete;
    HistoryLock &operator=(const HistoryLock &) = delete;

private:
    int descriptor_ = -1; ///< owned
};

/// The contents of the folder.
struct StoredVersions
{
    std::vector<HistoryEntry> entries; ///< the oldest first; their objects exist
    std::vector<std::string> faults;   ///< a message for each thing that is damaged or missing
};

/// The folder of one history. Use it only while its lock is held.
class HistoryStore
{
public:
    explicit HistoryStore(std::string folder) : folder_(std::move(folder)) {}

    /// Reads the index. If the index is damaged, the objects give the versions that it has
    /// lost. Throws an Error if a later version of the programs has written it.
    [[nodiscard]] StoredVersions load() const;

    /// The bytes of an object. Throws an Error.
    [[nodiscard]] std::string object(std::uint64_t number) const;

    /// Writes an object. Its number is larger than that of every existing object. Throws
    /// an Error.
    [[nodiscard]] std::uint64_t addObject(std::string_view bytes) const;

    /// Replaces the index. Then removes the objects that it does not name, and the temporary
    /// files of killed programs. Throws an Error.
    void save(const std::string &file, const std::vector<HistoryEntry> &entries) const;

private:
    [[nodiscard]] std::string objectName(std::uint64_t number) const;
    [[nodiscard]] std::vector<std::uint64_t> objectNumbers() const;
    void dropMissing(StoredVersions *stored) const;
    void adoptObjects(StoredVersions *stored) const;
    void removeUnnamed(const std::vector<HistoryEntry> &entries) const;

    std::string folder_;
};

} // namespace veltext
