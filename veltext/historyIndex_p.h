// The index of a history: one line for each version, the oldest first.
//
// Every line ends with a checksum of its own, so that damage costs single lines,
// and a last line tells whether the index is whole. docs/history.md describes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace veltext {

/// A line of the index.
struct HistoryEntry
{
    std::int64_t time;     ///< seconds since 1970
    std::uint64_t size;    ///< bytes of the version
    std::uint64_t stored;  ///< bytes of its object
    std::uint64_t object;  ///< number of the object; several entries may share one
    std::uint32_t content; ///< CRC-32 of the version
    std::string program;
};

/// An index that was read, or is going to be written.
struct HistoryIndex
{
    std::vector<HistoryEntry> entries; ///< the oldest first
    std::size_t badLines = 0;          ///< that could not be understood
    bool isWhole = false;              ///< nothing is missing or damaged
};

/// Takes from the text of an index what is intact. Throws an Error that calls it
/// `name` if a later version of the programs has written it.
[[nodiscard]] HistoryIndex parseIndex(std::string_view text, const std::string &name);

/// The text of an index; `file` is the path that it is about.
[[nodiscard]] std::string indexText(const std::string &file,
                                    const std::vector<HistoryEntry> &entries);

} // namespace veltext
