// Strings and offsets: the writer and the reader of each form.
#include "io/Src/Main/zot_primitives.h"

#include "io/Src/Main/byte_order.h"
#include "io/Src/Main/decimal.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace {

std::string_view cut(std::string_view text, std::size_t width)
{
    constexpr std::string_view ends("\n\0", 2);
    return text.substr(0, std::min(width, text.find_first_of(ends)));
}

[[nodiscard]] int put(zot_io &io, const void *bytes, std::size_t count)
{
    return io.stream.write(bytes, count) ? IO_OK : io_write_code();
}

template <typename Integer>
[[nodiscard]] int put_number(zot_io &io, format_code format, Integer number)
{
    if (format.swapped()) {
        swap_bytes(&number, 1, sizeof number);
    }
    return put(io, &number, sizeof number);
}

template <typename Integer>
[[nodiscard]] int get_number(zot_io &io, format_code format, const char *function, Integer &number)
{
    std::size_t got = io.stream.read(&number, sizeof number);
    if (got != sizeof number) {
        return zotshortRead(io, function, got, sizeof number);
    }
    if (format.swapped()) {
        swap_bytes(&number, 1, sizeof number);
    }
    return IO_OK;
}

[[nodiscard]] int put_offset_text(zot_io &io, std::int64_t offset)
{
    char digits[24];
    char *end = std::to_chars(digits, digits + sizeof digits, offset).ptr;
    auto count = static_cast<std::size_t>(end - digits);
    auto width = static_cast<std::size_t>(io.offset_width);
    if (count > width) {
        return io.report->error(IO_BAD_FORMAT,
                                "writeOffset: offset %lld too large for current offset format %d."
                                "  Possibly a dataset >2Gb.",
                                static_cast<long long>(offset), io.offset_width);
    }
    std::string line(width - count, ' ');
    line.append(digits, count) += '\n';
    return put(io, line.data(), line.size());
}

[[nodiscard]] int get_offset_text(zot_io &io, std::int64_t &offset)
{
    auto width = static_cast<std::size_t>(io.offset_width);
    std::string line;
    io_stream::line_end end = io.stream.read_line(width, line);
    if (end == io_stream::at_end_of_file) {
        return zotshortRead(io, "zotreadOffset", line.size(), width + 1);
    }
    if (end != io_stream::at_lf || line.size() != width || !parse_decimal(line, offset)) {
        return io.report->error(IO_READ_ERROR, "zotreadOffset: not an offset: \"%s\"",
                                line.c_str());
    }
    return IO_OK;
}

} // namespace

std::string_view zottrimEnd(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(" \t\n\v\f\r") + 1);
}

int zotshortRead(const zot_io &io, const char *function, std::size_t got, std::size_t expected)
{
    auto have = static_cast<int>(got);
    auto need = static_cast<int>(expected);
    if (io.stream.failed()) {
        return io.report->zotsystemErr(
            IO_READ_ERROR, "%s: fread failed: read %d bytes, expected %d", function, have, need);
    }
    return io.report->error(IO_READ_ERROR, "%s: fread failed: read %d bytes, expected %d", function,
                            have, need);
}

int zotwriteString(zot_io &io, format_code format, std::string_view text, std::size_t width)
{
    if (!format.formatted()) {
        return put(io, text.data(), text.size());
    }
    text = cut(text, width);
    if (int code = put(io, text.data(), text.size())) {
        return code;
    }
    std::string rest(width - text.size(), ' ');
    rest += '\n';
    return put(io, rest.data(), rest.size());
}

int zotreadString(zot_io &io, format_code format, std::size_t width, std::string &text)
{
    if (!format.formatted()) {
        text.resize(width);
        std::size_t got = io.stream.read(text.data(), width);
        text.resize(got);
        return got == width ? IO_OK : zotshortRead(io, "zotreadString", got, width);
    }
    io_stream::line_end end = io.stream.read_line(width + 1, text);
    if (end == io_stream::at_end_of_file) {
        return zotshortRead(io, "zotreadString", text.size(), width + 1);
    }
    text.resize(zottrimEnd(text).size());
    if (end == io_stream::at_limit || text.size() > width) {
        return io.report->error(IO_NO_ROOM, "zotreadString: read too many characters: %s\n",
                                text.c_str());
    }
    return IO_OK;
}

int zotreadSlot(zot_io &io, char *slot, std::size_t room, std::size_t width)
{
    std::size_t kept = std::min(room, width);
    std::size_t got = io.stream.read(slot, kept);
    bool there =
        got == kept && io.stream.seek(io.stream.tell() + static_cast<std::int64_t>(width - kept));
    if (!there) {
        return zotshortRead(io, "zotreadString", got, width);
    }
    slot[zottrimEnd({slot, strnlen(slot, kept)}).size()] = '\0';
    return IO_OK;
}

int zotwriteHdrString(zot_io &io, format_code format, std::string_view text, std::size_t most)
{
    if (format.formatted()) {
        return zotwriteString(io, format, text, most);
    }
    if (int code = zotwriteCount(io, format, static_cast<std::int32_t>(text.size()))) {
        return code;
    }
    return zotwriteString(io, format, text, text.size());
}

int zotreadHdrString(zot_io &io, format_code format, std::size_t most, std::string &text)
{
    if (format.formatted()) {
        return zotreadString(io, format, most, text);
    }
    std::int32_t count = 0;
    if (int code = zotreadCount(io, format, count)) {
        return code;
    }
    if (count < 0 || static_cast<std::size_t>(count) > most) {
        return io.report->error(
            IO_NO_ROOM,
            "zotreadHdrString: not enough buffer space for string: have %d, require > %d\n",
            static_cast<int>(most) + 1, count);
    }
    if (int code = zotreadString(io, format, static_cast<std::size_t>(count), text)) {
        return code;
    }
    text.resize(zottrimEnd(text).size());
    return IO_OK;
}

int zotwriteOffset(zot_io &io, format_code format, std::int64_t offset)
{
    if (!format.live()) {
        return io.report->error(IO_BAD_FORMAT, "zotwriteOffset: bad dataset format %c%c\n",
                                format.letter, format.second);
    }
    if (format.formatted()) {
        return put_offset_text(io, offset);
    }
    if (format.swapped()) {
        io.report->trace("zotwriteOffset: byte-swapping offset for format %c%c", format.letter,
                         format.second);
    }
    if (format.wide()) {
        return put_number(io, format, offset);
    }
    auto narrow = static_cast<std::int32_t>(offset);
    if (narrow != offset) {
        return io.report->error(
            IO_BAD_FORMAT,
            "writeOffset: offset %lld too large for integer,\nwould be written as"
            " %lld.  Possibly a dataset >2Gb.",
            static_cast<long long>(offset), static_cast<long long>(narrow));
    }
    return put_number(io, format, narrow);
}

int zotreadOffset(zot_io &io, format_code format, std::int64_t &offset)
{
    if (format.formatted()) {
        return get_offset_text(io, offset);
    }
    if (format.wide()) {
        return get_number(io, format, "zotreadOffset", offset);
    }
    std::int32_t narrow = 0;
    int code = get_number(io, format, "zotreadOffset", narrow);
    offset = narrow;
    return code;
}

std::int64_t zotoffsetBytes(const zot_io &io, format_code format)
{
    if (format.formatted()) {
        return io.offset_width + 1;
    }
    return format.wide() ? 8 : 4;
}

int zotwriteCount(zot_io &io, format_code format, std::int32_t count)
{
    return put_number(io, format, count);
}

int zotreadCount(zot_io &io, format_code format, std::int32_t &count)
{
    return get_number(io, format, "zotreadHdrString", count);
}
