// Writes and reads records, item by item.
#include "io/Src/Main/structure_data.h"

#include "io/Src/Main/byte_order.h"
#include "io/Src/Main/zot_numbers.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t real_text_max =
    40; // characters of a number in a line, with room for other writers

std::string_view cut_string(std::string_view text)
{
    constexpr char ends[] = {'\n', IO_ESC};
    return zottrimEnd(text.substr(0, text.find_first_of({ends, sizeof ends})));
}

/// A character that would end an item or a line is written as a space.
char plain_char(char c)
{
    return c == '\n' || c == IO_ESC || c == '\0' ? ' ' : c;
}

/// The place of the next value of each type in the arrays.
class array_cursor
{
public:
    std::int64_t take(const type_entry &entry)
    {
        std::int64_t &position = next_[static_cast<std::size_t>(entry.type)];
        std::int64_t start = position;
        position += entry.values();
        return start;
    }

private:
    element_counts next_ = {};
};

void append_entry(std::string &line, const type_entry &entry, const IO_data &data,
                  std::int64_t start)
{
    for (std::int64_t i = start; i < start + entry.values(); i++) {
        switch (entry.type) {
        case IO_STRI:
            line += cut_string(get_string(data, i, static_cast<std::size_t>(entry.length)));
            break;
        case IO_CHAR:
            line += plain_char(data.chars[i]);
            break;
        case IO_INTR:
            zotappendIntr(line, data.integers[i]);
            break;
        case IO_REAL:
            zotappendReal(line, static_cast<double>(data.reals[i]));
            break;
        case IO_DBLE:
            zotappendReal(line, data.doubles[i]);
            break;
        case IO_LOGL:
            zotappendIntr(line, data.logicals[i] != 0 ? 1 : 0);
            break;
        }
        line += IO_ESC;
    }
}

[[nodiscard]] int write_formatted(zot_io &io, const data_shape &shape, const IO_data &data)
{
    array_cursor cursor;
    std::string line;
    for (std::int32_t record = 0; record < shape.count; record++) {
        line.clear();
        for (const type_entry &entry : shape.type.entries) {
            append_entry(line, entry, data, cursor.take(entry));
        }
        line += '\n';
        if (!io.stream.write(line.data(), line.size())) {
            return io_write_code();
        }
    }
    return IO_OK;
}

[[nodiscard]] int bad_item(zot_io &io, std::string_view item)
{
    return io.report->error(IO_READ_ERROR, "read_data: not a number: \"%s\"",
                            std::string(item).c_str());
}

[[nodiscard]] int store_string(zot_io &io, std::string_view item, std::int32_t length,
                               IO_data &data, std::int64_t at)
{
    item = zottrimEnd(item);
    if (item.size() > static_cast<std::size_t>(length)) {
        return io.report->error(IO_NO_ROOM, "zotreadString: read too many characters: %s\n",
                                std::string(item).c_str());
    }
    put_string(data, at, item);
    return IO_OK;
}

[[nodiscard]] int store_item(zot_io &io, const type_entry &entry, std::string_view item,
                             IO_data &data, std::int64_t at)
{
    switch (entry.type) {
    case IO_STRI:
        return store_string(io, item, entry.length, data, at);
    case IO_CHAR:
        data.chars[at] = item.size() == 1 ? item[0] : ' ';
        return item.size() <= 1 ? IO_OK : bad_item(io, item);
    case IO_INTR:
        return zotparseIntr(item, data.integers[at]) ? IO_OK : bad_item(io, item);
    case IO_REAL:
        return zotparseReal(item, data.reals[at]) ? IO_OK : bad_item(io, item);
    case IO_DBLE:
        return zotparseReal(item, data.doubles[at]) ? IO_OK : bad_item(io, item);
    case IO_LOGL:
        return zotparseLogl(item, data.logicals[at]) ? IO_OK : bad_item(io, item);
    }
    return IO_UNKNOWN_ERROR;
}

[[nodiscard]] int store_entry(zot_io &io, const type_entry &entry, std::string_view &line,
                              IO_data &data, std::int64_t start)
{
    for (std::int64_t i = start; i < start + entry.values(); i++) {
        std::size_t end = line.find(IO_ESC);
        if (end == std::string_view::npos) {
            return io.report->error(IO_BAD_STRING,
                                    "read_data: no string terminator to seperate different data\n");
        }
        if (int code = store_item(io, entry, line.substr(0, end), data, i)) {
            return code;
        }
        line.remove_prefix(end + 1);
    }
    return IO_OK;
}

/// The greatest length of a record's line.
std::size_t line_limit(const data_type &type)
{
    std::int64_t sum = 0;
    for (const type_entry &entry : type.entries) {
        auto item = element_of(entry.type).has_length ? static_cast<std::int64_t>(entry.length)
                                                      : static_cast<std::int64_t>(real_text_max);
        sum += entry.values() * (item + 1);
    }
    return static_cast<std::size_t>(sum);
}

[[nodiscard]] int read_formatted(zot_io &io, const data_shape &shape, IO_data &data)
{
    array_cursor cursor;
    std::size_t limit = line_limit(shape.type);
    std::string text;
    for (std::int32_t record = 0; record < shape.count; record++) {
        io_stream::line_end end = io.stream.read_line(limit, text);
        if (end == io_stream::at_end_of_file) {
            return zotshortRead(io, "read_data", text.size(), text.size() + 1);
        }
        if (end == io_stream::at_limit) {
            return io.report->error(IO_NO_ROOM, "zotreadString: read too many characters: %s\n",
                                    text.c_str());
        }
        std::string_view line = text;
        for (const type_entry &entry : shape.type.entries) {
            if (int code = store_entry(io, entry, line, data, cursor.take(entry))) {
                return code;
            }
        }
        if (!zottrimEnd(line).empty()) {
            return bad_item(io, line);
        }
    }
    return IO_OK;
}

[[nodiscard]] int write_string(zot_io &io, const type_entry &entry, const IO_data &data,
                               std::int64_t at)
{
    auto length = static_cast<std::size_t>(entry.length);
    std::string text(get_string(data, at, length));
    text.resize(length, ' ');
    return io.stream.write(text.data(), length) ? IO_OK : io_write_code();
}

[[nodiscard]] int write_chars(zot_io &io, const type_entry &entry, const IO_data &data,
                              std::int64_t start)
{
    bool written = io.stream.write(data.chars + start, static_cast<std::size_t>(entry.count));
    return written ? IO_OK : io_write_code();
}

[[nodiscard]] int read_chars(zot_io &io, const type_entry &entry, IO_data &data, std::int64_t start)
{
    auto bytes = static_cast<std::size_t>(entry.count);
    std::size_t got = io.stream.read(data.chars + start, bytes);
    return got == bytes ? IO_OK : zotshortRead(io, "read_data", got, bytes);
}

/// Writes or reads the values of an entry; numbers have the dataset's byte order.
[[nodiscard]] int write_entry(zot_io &io, const data_shape &shape, const type_entry &entry,
                              const IO_data &data, std::int64_t start)
{
    switch (entry.type) {
    case IO_STRI:
        return write_string(io, entry, data, start);
    case IO_CHAR:
        return write_chars(io, entry, data, start);
    case IO_INTR:
        return zotwriteIntr(io, shape.format, data.integers + start, entry.count);
    case IO_REAL:
        return zotwriteReal(io, shape.format, data.reals + start, entry.count);
    case IO_DBLE:
        return zotwriteDble(io, shape.format, data.doubles + start, entry.count);
    case IO_LOGL:
        return zotwriteLogl(io, shape.format, data.logicals + start, entry.count);
    }
    return IO_UNKNOWN_ERROR;
}

[[nodiscard]] int read_entry(zot_io &io, const data_shape &shape, const type_entry &entry,
                             IO_data &data, std::int64_t start)
{
    switch (entry.type) {
    case IO_STRI:
        return zotreadSlot(io, string_slot(data, start), string_slot_bytes(data) - 1,
                           static_cast<std::size_t>(entry.length));
    case IO_CHAR:
        return read_chars(io, entry, data, start);
    case IO_INTR:
        return zotreadIntr(io, shape.format, data.integers + start, entry.count);
    case IO_REAL:
        return zotreadReal(io, shape.format, data.reals + start, entry.count);
    case IO_DBLE:
        return zotreadDble(io, shape.format, data.doubles + start, entry.count);
    case IO_LOGL:
        return zotreadLogl(io, shape.format, data.logicals + start, entry.count);
    }
    return IO_UNKNOWN_ERROR;
}

} // namespace

int write_structure(zot_io &io, const data_shape &shape, const IO_data &data)
{
    if (shape.format.formatted()) {
        return write_formatted(io, shape, data);
    }
    array_cursor cursor;
    for (std::int32_t record = 0; record < shape.count; record++) {
        for (const type_entry &entry : shape.type.entries) {
            if (int code = write_entry(io, shape, entry, data, cursor.take(entry))) {
                return code;
            }
        }
    }
    return IO_OK;
}

int read_structure(zot_io &io, const data_shape &shape, IO_data &data)
{
    if (shape.format.formatted()) {
        return read_formatted(io, shape, data);
    }
    array_cursor cursor;
    for (std::int32_t record = 0; record < shape.count; record++) {
        for (const type_entry &entry : shape.type.entries) {
            if (int code = read_entry(io, shape, entry, data, cursor.take(entry))) {
                return code;
            }
        }
    }
    return IO_OK;
}
