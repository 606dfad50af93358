// Writes and reads arrays of each type, and checks whether a header can be
// correct.
#include "io/Src/Main/data_io.h"

#include "io/Src/Main/compressed_data.h"
#include "io/Src/Main/structure_data.h"
#include "io/Src/Main/zot_numbers.h"

#include <algorithm>
#include <cstring>

namespace {

std::uint8_t plain_logical(std::uint8_t value)
{
    return value != 0 ? 1 : 0;
}

/// Exactly 0 and 1, whatever value the client uses for true.
std::vector<std::uint8_t> plain_logicals(const std::uint8_t *values, std::int32_t count)
{
    std::vector<std::uint8_t> plain(static_cast<std::size_t>(count));
    std::transform(values, values + count, plain.begin(), plain_logical);
    return plain;
}

[[nodiscard]] int write_strings(zot_io &io, const data_shape &shape, const IO_data &data)
{
    auto length = static_cast<std::size_t>(shape.type.entries.front().length);
    std::string padded;
    for (std::int32_t i = 0; i < shape.count; i++) {
        std::string_view text = get_string(data, i, length);
        if (!shape.format.formatted()) {
            padded.assign(text);
            padded.resize(length, ' ');
            text = padded;
        }
        if (int code = zotwriteString(io, shape.format, text, length)) {
            return code;
        }
    }
    return IO_OK;
}

[[nodiscard]] int read_strings(zot_io &io, const data_shape &shape, IO_data &data)
{
    auto length = static_cast<std::size_t>(shape.type.entries.front().length);
    std::size_t room = string_slot_bytes(data) - 1;
    std::string text;
    for (std::int32_t i = 0; i < shape.count; i++) {
        if (!shape.format.formatted()) {
            if (int code = zotreadSlot(io, string_slot(data, i), room, length)) {
                return code;
            }
            continue;
        }
        if (int code = zotreadString(io, shape.format, length, text)) {
            return code;
        }
        put_string(data, i, text);
    }
    return IO_OK;
}

[[nodiscard]] int write_chars(zot_io &io, const data_shape &shape, const IO_data &data)
{
    auto count = static_cast<std::size_t>(shape.count);
    return zotwriteString(io, shape.format, std::string_view(data.chars, count), count);
}

[[nodiscard]] int read_chars(zot_io &io, const data_shape &shape, IO_data &data)
{
    auto count = static_cast<std::size_t>(shape.count);
    if (count > 0 && !shape.format.formatted()) {
        std::size_t got = io.stream.read(data.chars, count);
        return got == count ? IO_OK : zotshortRead(io, "zotreadString", got, count);
    }
    std::string text;
    if (int code = zotreadString(io, shape.format, count, text)) {
        return code;
    }
    text.resize(count, ' ');
    std::copy(text.begin(), text.end(), data.chars);
    return IO_OK;
}

[[nodiscard]] int write_array(zot_io &io, const data_shape &shape, const IO_data &data)
{
    switch (shape.type.single()) {
    case IO_STRI:
        return write_strings(io, shape, data);
    case IO_CHAR:
        return write_chars(io, shape, data);
    case IO_INTR:
        return zotwriteIntr(io, shape.format, data.integers, shape.count);
    case IO_REAL:
        return zotwriteReal(io, shape.format, data.reals, shape.count);
    case IO_DBLE:
        return zotwriteDble(io, shape.format, data.doubles, shape.count);
    case IO_LOGL:
        return zotwriteLogl(io, shape.format, data.logicals, shape.count);
    }
    return IO_UNKNOWN_ERROR;
}

[[nodiscard]] int read_array(zot_io &io, const data_shape &shape, IO_data &data)
{
    switch (shape.type.single()) {
    case IO_STRI:
        return read_strings(io, shape, data);
    case IO_CHAR:
        return read_chars(io, shape, data);
    case IO_INTR:
        return zotreadIntr(io, shape.format, data.integers, shape.count);
    case IO_REAL:
        return zotreadReal(io, shape.format, data.reals, shape.count);
    case IO_DBLE:
        return zotreadDble(io, shape.format, data.doubles, shape.count);
    case IO_LOGL:
        return zotreadLogl(io, shape.format, data.logicals, shape.count);
    }
    return IO_UNKNOWN_ERROR;
}

[[nodiscard]] int read_compressed(zot_io &io, const data_shape &shape, IO_data &data)
{
    element_type type = shape.type.single();
    void *array = element_array(data, type);
    if (int code = read_compressed_dataarray(io, shape.format, type, array, shape.count,
                                             shape.blockfactor, shape.end)) {
        return code;
    }
    if (element_of(type).is_logical) {
        std::transform(data.logicals, data.logicals + shape.count, data.logicals, plain_logical);
    }
    return IO_OK;
}

[[nodiscard]] int read_any(zot_io &io, const data_shape &shape, IO_data &data)
{
    if (shape.type.structure) {
        return read_structure(io, shape, data);
    }
    bool compressed = false;
    if (int code =
            compression_wanted(*io.report, shape.format, shape.type, shape.count, compressed)) {
        return code;
    }
    return compressed ? read_compressed(io, shape, data) : read_array(io, shape, data);
}

[[nodiscard]] int too_short(zot_io &io, std::int64_t left)
{
    return io.report->error(IO_READ_ERROR,
                            "read_data: the header claims more data than the %lld bytes that are"
                            " left",
                            static_cast<long long>(left));
}

/// Whether `count` elements of `bytes` each are at most `limit`. The product may
/// need more than 64 bits.
bool within(std::int64_t count, std::int64_t bytes, std::int64_t limit)
{
    return bytes <= 0 || count <= limit / bytes;
}

/// Numbers and characters in text are in lines. The lines of other writers may
/// have other lengths than the lines of this library.
bool comes_in_elements(const data_shape &shape)
{
    return !shape.format.formatted() || shape.type.structure ||
           element_of(shape.type.single()).has_length;
}

[[nodiscard]] int skim_elements(zot_io &io, const data_shape &shape)
{
    constexpr std::int64_t part_bytes = 256 * 1024;
    std::int64_t each = std::max<std::int64_t>(shape.type.bytes(), 1);
    std::int64_t at_once = comes_in_elements(shape) ? std::max<std::int64_t>(part_bytes / each, 1)
                                                    : std::int64_t{shape.count};
    data_shape part = shape;
    part.count = static_cast<std::int32_t>(std::min<std::int64_t>(at_once, shape.count));
    element_storage storage;
    if (!storage.allocate(total_counts(part.type, part.count), part.type.string_slot())) {
        return io.report->no_memory("skim_data", storage.bytes());
    }
    for (std::int32_t left = shape.count;; left -= part.count) {
        part.count = std::min(part.count, left);
        if (int code = read_any(io, part, storage.data())) {
            return code;
        }
        if (left == part.count) {
            return IO_OK;
        }
    }
}

} // namespace

int write_data(zot_io &io, const data_shape &shape, const IO_data &data)
{
    if (!arrays_hold(data, total_counts(shape.type, shape.count))) {
        return io.report->error(IO_NO_ROOM, "write_data: not enough data for the element count\n");
    }
    if (shape.type.structure) {
        return write_structure(io, shape, data);
    }
    bool compressed = false;
    if (int code =
            compression_wanted(*io.report, shape.format, shape.type, shape.count, compressed)) {
        return code;
    }
    if (compressed) {
        element_type type = shape.type.single();
        std::vector<std::uint8_t> logicals;
        const void *array = element_array(data, type);
        if (element_of(type).is_logical) {
            logicals = plain_logicals(data.logicals, shape.count);
            array = logicals.data();
        }
        int code = write_compressed_dataarray(io, shape.format, type, array, shape.count);
        if (code != IO_COMPRESSION) {
            return code;
        }
    }
    return write_array(io, shape, data);
}

int check_data_claim(zot_io &io, const data_shape &shape)
{
    bool compressed = false;
    if (int code =
            compression_wanted(*io.report, shape.format, shape.type, shape.count, compressed)) {
        return code;
    }
    if (compressed) {
        std::int64_t bytes = std::max<std::int64_t>(shape.end - io.stream.tell(), 0);
        bool possible =
            within(shape.count, shape.type.bytes(), IO_INFLATE_RATIO * bytes + IO_INFLATE_RATIO);
        return possible ? IO_OK
                        : io.report->error(IO_COMPRESSION,
                                           "read_data: the header claims more data than %lld"
                                           " compressed bytes can hold",
                                           static_cast<long long>(bytes));
    }
    std::int64_t left = std::max<std::int64_t>(io.stream.size() - io.stream.tell(), 0);
    if (!shape.format.formatted()) {
        return within(shape.count, shape.type.bytes(), left) ? IO_OK : too_short(io, left);
    }
    // A line in the file may be much shorter than its values are in memory.
    std::int64_t memory = std::max(IO_INFLATE_RATIO * left, IO_ALWAYS_POSSIBLE);
    bool possible = within(shape.count, shape.type.formatted_bytes(), left) &&
                    within(shape.count, shape.type.bytes(), memory);
    return possible ? IO_OK : too_short(io, left);
}

int skim_data(zot_io &io, const data_shape &shape)
{
    bool compressed = false;
    if (int code =
            compression_wanted(*io.report, shape.format, shape.type, shape.count, compressed)) {
        return code;
    }
    if (!compressed) {
        return skim_elements(io, shape);
    }
    return read_compressed_dataarray(io, shape.format, shape.type.single(), nullptr, shape.count,
                                     shape.blockfactor, shape.end);
}

int read_data(zot_io &io, const data_shape &shape, IO_data &data)
{
    int code = read_any(io, shape, data);
    if (code != IO_OK) {
        blank_arrays(data, total_counts(shape.type, shape.count));
    }
    return code;
}
