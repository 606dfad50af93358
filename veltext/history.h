// The versions of a file that saves have replaced.
//
// Before a program replaces a command file, the history keeps the contents of the
// file. Versions are numbered from 1, the newest first. They are not next to the file,
// but in a folder of the user (stateFolder.h). docs/history.md describes the bytes.
//
// What is kept, for each file:
// - all versions of the last 24 hours;
// - of the older versions, the last one of each day (UTC);
// - at most 100 versions and 50 MB, compressed; the oldest are removed first.
// If several versions have the same content, it is stored once. If a version has the same
// content as the version before it, it replaces that version.
//
// The versions are in the order in which they were kept. A clock that goes backwards does
// not change this order, and removes no versions.
//
// A failure of the history never stops a save: `keep` does not throw; it returns a
// message. If a part of the history is damaged, the other parts are listed and read, and
// the missing parts are reported. Several programs may use the history of a file at the
// same time; one waits for another, 10 seconds at most.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace veltext {

/// One version that was kept.
struct Version
{
    std::int64_t time;    ///< when it was replaced, in seconds since 1970 (UTC)
    std::uint64_t size;   ///< of the file, in bytes
    std::string program;  ///< the program that replaced it: "veltool", "veleditor"
    std::uint64_t object; ///< where its bytes are, for `History::read`
};

/// The contents of a history.
struct VersionList
{
    std::vector<Version> versions;   ///< newest first: the first is version 1
    std::vector<std::string> faults; ///< a message for each thing that is damaged or missing
};

/// The limits, for each file.
inline constexpr std::size_t mostVersions = 100;
inline constexpr std::uint64_t mostHistoryBytes = 50'000'000;
inline constexpr std::int64_t secondsOfADay = 24 * 60 * 60;

/// The history of one file. An object keeps no file open and no lock.
class History
{
public:
    /// The current time, in seconds since 1970 (UTC).
    using Clock = std::function<std::int64_t()>;

    /// In the folder that the environment names, with the clock of the system.
    /// The file need not exist. Its path is used without symbolic links.
    explicit History(const std::string &file);
    /// In another folder, with another clock.
    History(const std::string &file, std::string folder, Clock clock);

    /// Keeps the current contents of the file, which `program` is going to replace, and
    /// removes the versions that are not kept any longer. Does nothing if the file does
    /// not exist or is not a regular file. Returns a message, with the name of the file
    /// as given, if the version could not be kept or the history was damaged; otherwise
    /// an empty text. Does not throw.
    [[nodiscard]] std::string keep(const std::string &program) const;

    /// All versions; none if there is no history. Does not read their contents. Throws
    /// an Error if the history exists but no part of it can be read.
    [[nodiscard]] VersionList list() const;

    /// The bytes of a version that `list` gave. Throws an Error if they are damaged or
    /// were removed since.
    [[nodiscard]] std::string read(const Version &version) const;

    /// The folder with the history of this file, which need not exist. Empty if the
    /// environment names no folder for the state.
    [[nodiscard]] const std::string &folder() const { return folder_; }

private:
    [[nodiscard]] std::string keepOrThrow(const std::string &program) const;

    std::string name_;   ///< as given
    std::string path_;   ///< canonical
    std::string folder_; ///< of this file
    Clock clock_;
};

} // namespace veltext
