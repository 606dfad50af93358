// The forms of a value in a file: plain strings, header strings, offsets. Only these
// functions and those of zot_numbers.h write and read the bytes of a container. The reader
// and the writer of each form are next to each other.
//
// Readers report what is wrong. Writers report only values that the format cannot represent.
// The caller reports a failed write, because it knows what it was writing (errno is kept for
// this).
#pragma once

#include "io/Src/Main/container_format.h"
#include "io/Src/Main/io_stream.h"
#include "io/Src/Main/iofmt.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What the primitives work on: the open file, its width of offsets in text,
/// and who gets the messages.
struct zot_io
{
    io_stream stream;
    const io_reporter *report = nullptr; ///< not owned
    int offset_width = IO_OFFSET_WIDTH;
};

/// Formatted: cut at `width`, LF or NUL, filled with spaces, then LF. Binary: the text's
/// bytes.
[[nodiscard]] int zotwriteString(zot_io &io, format_code format, std::string_view text,
                                 std::size_t width);

/// A binary string of `width` bytes into a client's slot that holds `room`
/// characters and a NUL: cut to that, and without trailing white space.
[[nodiscard]] int zotreadSlot(zot_io &io, char *slot, std::size_t room, std::size_t width);

/// Without trailing white space if formatted, otherwise exactly `width` bytes. 14 if the line
/// is longer than `width`, 10 if the file ends.
[[nodiscard]] int zotreadString(zot_io &io, format_code format, std::size_t width,
                                std::string &text);

/// At most `most` characters; in binary formats their count comes first.
[[nodiscard]] int zotwriteHdrString(zot_io &io, format_code format, std::string_view text,
                                    std::size_t most);

/// Without trailing white space. 14 for a count that is negative or above `most`.
[[nodiscard]] int zotreadHdrString(zot_io &io, format_code format, std::size_t most,
                                   std::string &text);

/// 15 if the format or its width cannot represent the value, and for marks of deletions.
[[nodiscard]] int zotwriteOffset(zot_io &io, format_code format, std::int64_t offset);

/// 10 if the file ends or the text is not a number.
[[nodiscard]] int zotreadOffset(zot_io &io, format_code format, std::int64_t &offset);

/// The bytes that zotwriteOffset() writes.
std::int64_t zotoffsetBytes(const zot_io &io, format_code format);

/// One 4-byte integer, as before header strings.
[[nodiscard]] int zotwriteCount(zot_io &io, format_code format, std::int32_t count);
[[nodiscard]] int zotreadCount(zot_io &io, format_code format, std::int32_t &count);

/// 10, with errno's text if the read failed, otherwise saying how much was missing.
[[nodiscard]] int zotshortRead(const zot_io &io, const char *function, std::size_t got,
                               std::size_t expected);

/// `text` without white space at its end.
std::string_view zottrimEnd(std::string_view text);
