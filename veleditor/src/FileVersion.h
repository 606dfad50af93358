// The bytes that a file had at some time, and whether it still has them.
//
// The file is read only if the system says that it may have changed: if it is another
// file, or has another size or time. A file that changed moments before it was read
// is read again the next time: a second change within the resolution of the clock
// leaves its times as they were.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace velEditor {

/// What the system says about a regular file.
struct FileStamp
{
    std::uint64_t device;
    std::uint64_t inode;
    std::uint64_t links;  ///< how many names the file has
    std::uint64_t size;   ///< in bytes
    std::int64_t written; ///< when its bytes changed last, in nanoseconds since 1970
    std::int64_t touched; ///< when anything about it changed last, in the same unit

    bool operator==(const FileStamp &) const = default;
};

/// What is at a path, links followed.
struct FileStatus
{
    enum class Kind {
        Regular,
        Missing, ///< nothing is there, or it is not a regular file
        Unknown, ///< the system does not say
    };

    Kind kind;
    FileStamp stamp; ///< of a regular file
};

[[nodiscard]] FileStatus statusOf(const std::string &file);

class FileVersion
{
public:
    enum class Match {
        Same,
        Other,
        Missing, ///< see FileStatus
        Unknown, ///< the file cannot be read
    };

    /// What a file holds, compared with a version.
    struct Comparison
    {
        Match match;
        std::size_t hash = 0; ///< of the bytes, if they are others

        bool operator==(const Comparison &) const = default;
    };

    /// What a regular file holds now; null if it is not a regular file or cannot be
    /// read.
    [[nodiscard]] static std::shared_ptr<FileVersion> read(const std::string &file);

    /// Bytes that were written to a file.
    explicit FileVersion(std::string bytes) : bytes_(std::move(bytes)) {}

    [[nodiscard]] const std::string &bytes() const { return bytes_; }

    /// What the system said about the file when it was last seen with these bytes;
    /// nothing if it was not seen.
    [[nodiscard]] const std::optional<FileStamp> &stamp() const { return stamp_; }

    /// Compares the file with this version.
    [[nodiscard]] Comparison compare(const std::string &file);

private:
    /// What was found when the file was read last.
    struct Look
    {
        FileStamp stamp;
        bool isLasting; ///< a later change gives another stamp
        Comparison comparison;
    };

    std::string bytes_;
    std::optional<FileStamp> stamp_;
    std::optional<Look> last_;
};

} // namespace velEditor
