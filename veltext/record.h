// Checked records, one after the other in a file that grows.
//
//     +--------+--------+----------+------+-------- - - -+
//     | marker | length | checksum | kind | body         |
//     |   4    |   4    |    4     |  1   | length bytes |
//     +--------+--------+----------+------+-------- - - -+
//
// Numbers begin with their lowest byte. The checksum is the CRC-32 of length, kind
// and body. A program that is killed while it appends leaves a last record that is
// cut short; damage costs single records. docs/journal.md has an example, byte by
// byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace veltext {

/// The bytes before the body.
inline constexpr std::size_t recordHeadSize = 13;

/// The longest body.
inline constexpr std::uint64_t longestRecord = 0xffffffffU;

/// The bytes of a record. The body must not be longer than `longestRecord`.
[[nodiscard]] std::string recordOf(char kind, std::string_view body);

/// An intact record.
struct Record
{
    char kind;
    std::string_view body; ///< in the bytes of the reader
};

/// Finds the intact records in the bytes of a file, which outlive it.
class RecordReader
{
public:
    explicit RecordReader(std::string_view bytes) : bytes_(bytes) {}

    /// The next intact record; nothing at the end.
    [[nodiscard]] std::optional<Record> next();

    /// How many bytes before the record that `next` gave last do not belong to an intact
    /// record; at the end, how many after the last one.
    [[nodiscard]] std::size_t skipped() const { return skipped_; }

    /// At the end: the bytes that are left are the beginning of a record that was not
    /// written to its end.
    [[nodiscard]] bool isTorn() const { return isTorn_; }

    /// Where the record that `next` gave last ends.
    [[nodiscard]] std::size_t position() const { return position_; }

private:
    [[nodiscard]] std::optional<Record> recordAt(std::size_t place) const;

    std::string_view bytes_;
    std::size_t position_ = 0;
    std::size_t skipped_ = 0;
    bool isTorn_ = false;
};

} // namespace veltext
