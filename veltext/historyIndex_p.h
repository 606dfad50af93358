// The index of a history: one line for each version, the oldest first.
//
// Every line ends with its own checksum, so that damage affects only single lines. The last
// line shows whether the index is complete. docs/history.md describes it.
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

/// An index that was read or will be written.
struct HistoryIndex
{
    std::vector<HistoryEntry> entries; ///< the oldest first
    std::size_t badLines = 0;          ///< number of damaged or unknown lines
    bool isWhole = false;              ///< nothing is missing or damaged
};

/// Reads the intact lines of the text of an index. If a later version of the programs has
/// written it, throws an Error with `name` as the name of the index.
[[nodiscard]] HistoryIndex parseIndex(std::string_view text, const std::string &name);

/// The text of an index; `file` is the path of the file with this history.
[[nodiscard]] std::string indexText(const std::string &file,
                                    const std::vector<HistoryEntry> &entries);

} // namespace veltext
