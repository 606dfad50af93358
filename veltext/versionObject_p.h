// The bytes of a version as they are stored: a gzip file, which other programs
// can read too. Its header has the time and, as its comment, the program, so that
// it is a version by itself where the index has lost it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace veltext {

/// A version, compressed.
struct VersionObject
{
    std::string bytes; ///< the gzip file
    std::uint64_t size = 0;
    std::uint32_t content = 0; ///< CRC-32
};

/// What is found in an object besides its content.
struct ObjectHeader
{
    std::int64_t time = 0;
    std::string program;
};

/// Compresses all that an open descriptor still gives; it stays open. Needs no more
/// memory than the limit. Throws an Error that calls the file `name` if it cannot be
/// read, or takes more than `limit` bytes compressed.
[[nodiscard]] VersionObject compressVersion(int descriptor, const std::string &name,
                                            const ObjectHeader &header, std::uint64_t limit);

/// Whether two objects have the same content, whatever their headers are.
[[nodiscard]] bool haveSameContent(std::string_view one, std::string_view other);

/// Receives a content part by part; false ends it.
using ContentSink = std::function<bool(std::string_view part)>;

/// Passes the content of an object to `sink`. False if it is damaged or was ended.
/// `header` may be null.
[[nodiscard]] bool expandVersion(std::string_view object, ObjectHeader *header,
                                 const ContentSink &sink);

} // namespace veltext
