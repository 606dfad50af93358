// Files in the form that the parser needs: all bytes in one block.
#pragma once

#include "velapilt/src/velPages.h"
#include "velapilt/src/velapilt.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The bytes of a file, followed by a line feed and the slack of velScan.h.
struct velFileBytes
{
    velPages data;         ///< owned
    std::size_t size = 0;  ///< of the file, in bytes
    std::size_t start = 0; ///< of the text: after a byte order mark

    [[nodiscard]] std::string_view view() const { return {data.get() + start, size - start}; }
};

/// Reads a whole file (velFile.cpp). The messages are those of loadFileData. Throws
/// bad_alloc.
[[nodiscard]] const char *velReadFile(velHandle *handle, const char *path, velFileBytes *bytes);

/// Parses the lines of a file as parseVELData does those of a list (velParser.cpp).
[[nodiscard]] const char *velParseFile(velHandle *handle, const velFileBytes &bytes,
                                       std::uint32_t flags, const velDigest *expected,
                                       velDigest *digest);
