// The versions of a file that saves have replaced.
//
// Before a program replaces a command file, it lets the history keep what the
// file holds then. Versions are numbered from 1, the newest first. They are in a
// folder of the user's, apart from the file (stateFolder.h); docs/history.md
// describes the bytes.
//
// What is kept, for each file:
// - all versions of the last 24 hours;
// - of what is older, the last version of each day (UTC);
// - at most 100 versions and 50 MB, compressed; the oldest give way.
// A content that several versions share is stored once. A version that has the
// content of the version before it takes its place.
//
// The order of the versions is that in which they were kept: a clock that goes
// backwards changes neither it nor what is kept.
//
// Nothing here may fail a save: `keep` throws nothing, it gives a message.
// Damage costs what is damaged and no more: the rest is listed and read, and what
// is missing is reported. Several programs may use the history of a file at the
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
    std::string program;  ///< that replaced it: "veltool", "veleditor"
    std::uint64_t object; ///< where its bytes are, for `History::read`
};

/// What a history holds.
struct VersionList
{
    std::vector<Version> versions;   ///< newest first: the first is version 1
    std::vector<std::string> faults; ///< a message for each thing that is damaged or missing
};

/// The limits, for each file.
inline constexpr std::size_t mostVersions = 100;
inline constexpr std::uint64_t mostHistoryBytes = 50'000'000;
inline constexpr std::int64_t secondsOfADay = 24 * 60 * 60;

/// The history of one file. An object holds no file open and no lock.
class History
{
public:
    /// The current time, in seconds since 1970 (UTC).
    using Clock = std::function<std::int64_t()>;

    /// In the folder that the environment names, with the clock of the system.
    /// The file need not exist; it is known by where links lead.
    explicit History(const std::string &file);
    /// In another folder, with another clock.
    History(const std::string &file, std::string folder, Clock clock);

    /// Keeps what the file holds now, and lets go of what is kept no longer.
    /// `program` is about to replace it. What does not exist or is not a regular
    /// file has no versions. Gives a message, with the name of the file as given,
    /// if the version could not be kept or the history was damaged; else an empty
    /// text. Throws nothing.
    [[nodiscard]] std::string keep(const std::string &program) const;

    /// All versions; none if there is no history. Reads no contents. Throws an Error
    /// if the history is there and cannot be read at all.
    [[nodiscard]] VersionList list() const;

    /// The bytes of a version that `list` gave. Throws an Error if they are damaged,
    /// or no longer kept.
    [[nodiscard]] std::string read(const Version &version) const;

    /// The folder with the history of this file; it may not exist. Empty if the
    /// environment names no place.
    [[nodiscard]] const std::string &folder() const { return folder_; }

private:
    [[nodiscard]] std::string keepOrThrow(const std::string &program) const;

    std::string name_;   ///< as given
    std::string path_;   ///< canonical
    std::string folder_; ///< of this file
    Clock clock_;
};

} // namespace veltext
