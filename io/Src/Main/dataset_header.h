// The header of a dataset: what is between "*HEADER" and the data tag.
#pragma once

#include "io/Src/Main/zot_primitives.h"

#include <string>
#include <vector>

/// The records of a header.
struct dataset_header
{
    std::string what;
    std::string where;
    std::int32_t when = 0;
    std::vector<std::string> attributes;
    std::string type;
    std::int32_t count = 0;
    std::int32_t blockfactor = 1; ///< 0: there is no such record
};

/// Whether the texts fit their records and have no control characters.
bool header_is_writable(const dataset_header &header);

/// The block factor that goes into a header: 100000 for 1 or less in a
/// compressed format, 0 (none is written) in an uncompressed binary one.
std::int32_t header_blockfactor(format_code format, std::int32_t asked);

/// Writes from "*HEADER" up to the data tag, without this tag. 4 or 11 without a message if
/// the file cannot be written.
[[nodiscard]] int write_header(zot_io &io, format_code format, const dataset_header &header);

/// Reads from "*HEADER" up to the data tag; the stream is then before this tag. `file` is the
/// name for messages. 15 for a wrong record, 10 and 14 as the primitives return them. Memory
/// grows only with the data that was read.
[[nodiscard]] int read_header(zot_io &io, format_code format, const std::string &file,
                              dataset_header &header);

/// The tag before the data; reading gives 15 for another tag.
[[nodiscard]] int write_datatag(zot_io &io, format_code format);
[[nodiscard]] int read_datatag(zot_io &io, format_code format);

/// A plain tag such as "*DATASET".
[[nodiscard]] int write_tag(zot_io &io, format_code format, std::string_view tag);
