// Numbers in columns or binary words: the writer and the reader of each type.
#include "io/Src/Main/zot_numbers.h"

#include "io/Src/Main/byte_order.h"
#include "io/Src/Main/decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr std::size_t line_max = 1024; // characters of a line of numbers
constexpr std::size_t chunk_bytes = 64 * 1024;

// Binary arrays

[[nodiscard]] int write_words(zot_io &io, format_code format, const void *values,
                              std::int64_t count, std::size_t size)
{
    const auto *bytes = static_cast<const char *>(values);
    auto left = static_cast<std::size_t>(count) * size;
    if (!format.swapped() || size == 1) {
        return io.stream.write(bytes, left) ? IO_OK : io_write_code();
    }
    std::vector<char> chunk(std::min(left, chunk_bytes));
    while (left > 0) {
        std::size_t part = std::min(left, chunk.size());
        std::memcpy(chunk.data(), bytes, part);
        swap_bytes(chunk.data(), part / size, size);
        if (!io.stream.write(chunk.data(), part)) {
            return io_write_code();
        }
        bytes += part;
        left -= part;
    }
    return IO_OK;
}

[[nodiscard]] int read_words(zot_io &io, format_code format, const char *function, void *values,
                             std::int64_t count, std::size_t size)
{
    auto bytes = static_cast<std::size_t>(count) * size;
    std::size_t got = io.stream.read(values, bytes);
    if (got != bytes) {
        return zotshortRead(io, function, got, bytes);
    }
    if (format.swapped()) {
        swap_bytes(values, static_cast<std::size_t>(count), size);
    }
    return IO_OK;
}

// Text

void append_aligned(std::string &line, const char *text, std::size_t length, std::size_t width)
{
    if (length < width) {
        line.append(width - length, ' ');
    }
    line.append(text, length);
}

/// Writes `count` fields, `per_line` in each line; append(line, i) adds the i-th.
template <typename Append>
[[nodiscard]] int write_fields(zot_io &io, std::int64_t count, int per_line, Append append)
{
    std::string line;
    for (std::int64_t i = 0; i < count; i++) {
        append(line, i);
        if ((i + 1) % per_line == 0 || i + 1 == count) {
            line += '\n';
            if (!io.stream.write(line.data(), line.size())) {
                return io_write_code();
            }
            line.clear();
        }
    }
    return IO_OK;
}

[[nodiscard]] int bad_line(zot_io &io, const char *function, const std::string &line)
{
    return io.report->error(IO_READ_ERROR, "%s: not a line of numbers: \"%s\"", function,
                            line.c_str());
}

/// Reads lines until there are `count` values. split(line, i, room, n) stores the
/// values of a line from the i-th on, and sets their number.
template <typename Split>
[[nodiscard]] int read_fields(zot_io &io, const char *function, std::int64_t count, Split split)
{
    std::string line;
    for (std::int64_t i = 0; i < count;) {
        io_stream::line_end end = io.stream.read_line(line_max, line);
        if (end == io_stream::at_end_of_file) {
            return zotshortRead(io, function, line.size(), line.size() + 1);
        }
        std::size_t got = 0;
        auto room = static_cast<std::size_t>(count - i);
        if (end != io_stream::at_lf || !split(zottrimEnd(line), i, room, got) || got == 0) {
            return bad_line(io, function, line);
        }
        i += static_cast<std::int64_t>(got);
    }
    return IO_OK;
}

bool is_minus_and_ten_digits(std::string_view field)
{
    constexpr std::size_t wide = IO_INTEGER_WIDTH + 1;
    return field.size() == wide && field[0] == '-' &&
           field.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

/// The search of zotsplitIntr(); parse(field, value) reads one field.
template <typename Value, typename Parse>
class field_splitter
{
public:
    field_splitter(std::string_view line, Value *values, std::size_t room, Parse parse)
        : line_(line), values_(values), room_(room), parse_(parse)
    {
    }

    bool split(std::size_t &count)
    {
        if (line_.size() > line_max || !from(0, 0)) {
            return false;
        }
        count = count_;
        return true;
    }

private:
    bool from(std::size_t position, std::size_t index)
    {
        if (position == line_.size()) {
            count_ = index;
            return true;
        }
        // A failure from this place repeats, so each place is tried only once.
        if (index == room_ || dead_[position]) {
            return false;
        }
        constexpr std::size_t narrow = IO_INTEGER_WIDTH;
        if (field(position, narrow, index) && from(position + narrow, index + 1)) {
            return true;
        }
        if (is_minus_and_ten_digits(line_.substr(position, narrow + 1)) &&
            field(position, narrow + 1, index) && from(position + narrow + 1, index + 1)) {
            return true;
        }
        dead_[position] = true;
        return false;
    }

    bool field(std::size_t position, std::size_t width, std::size_t index)
    {
        return line_.size() - position >= width &&
               parse_(line_.substr(position, width), values_[index]);
    }

    std::string_view line_;
    Value *values_;
    std::size_t room_;
    Parse parse_;
    std::size_t count_ = 0;
    std::array<bool, line_max> dead_ = {};
};

template <typename Value, typename Parse>
bool split_fields(std::string_view line, Value *values, std::size_t room, std::size_t &count,
                  Parse parse)
{
    return field_splitter<Value, Parse>(line, values, room, parse).split(count);
}

template <typename Real>
[[nodiscard]] int read_reals(zot_io &io, const char *function, Real *values, std::int64_t count)
{
    auto split = [values](std::string_view line, std::int64_t first, std::size_t room,
                          std::size_t &got) {
        constexpr std::size_t width = IO_REAL_WIDTH;
        got = line.size() / width;
        if (line.size() % width != 0 || got > room) {
            return false;
        }
        for (std::size_t i = 0; i < got; i++) {
            if (!zotparseReal(line.substr(i * width, width),
                              values[first + static_cast<std::int64_t>(i)])) {
                return false;
            }
        }
        return true;
    };
    return read_fields(io, function, count, split);
}

/// Number of characters up to the next multiple of `width`.
std::size_t padding(std::size_t length, std::size_t width)
{
    return (width - length % width) % width;
}

std::string_view trim(std::string_view field)
{
    std::size_t start = field.find_first_not_of(' ');
    return start == std::string_view::npos ? std::string_view() : zottrimEnd(field.substr(start));
}

} // namespace

void zotappendIntr(std::string &line, std::int32_t value)
{
    char digits[16];
    char *end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    append_aligned(line, digits, static_cast<std::size_t>(end - digits), IO_INTEGER_WIDTH);
}

void zotappendReal(std::string &line, double value)
{
    char digits[40];
    constexpr int places = 11;
    char *end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::scientific, places)
            .ptr;
    // Like "%E": capital letters, also in INF and NAN.
    std::transform(digits, end, digits, [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    append_aligned(line, digits, static_cast<std::size_t>(end - digits), IO_REAL_WIDTH);
}

bool zotparseIntr(std::string_view field, std::int32_t &value)
{
    return parse_decimal(trim(field), value);
}

bool zotparseReal(std::string_view field, double &value)
{
    field = trim(field);
    if (field.size() > 1 && field[0] == '+' && field[1] != '-') {
        field.remove_prefix(1);
    }
    const char *end = field.data() + field.size();
    double number = 0;
    auto [stop, problem] = std::from_chars(field.data(), end, number);
    if (problem != std::errc() || stop != end) {
        return false;
    }
    value = number;
    return true;
}

bool zotfitsReal(double value)
{
    constexpr double beyond = 0x1.ffffffp127; // rounds to infinity
    return !std::isfinite(value) || std::abs(value) < beyond;
}

bool zotparseReal(std::string_view field, float &value)
{
    double number = 0;
    if (!zotparseReal(field, number)) {
        return false;
    }
    if (!zotfitsReal(number)) {
        return false;
    }
    value = static_cast<float>(number);
    return true;
}

bool zotparseLogl(std::string_view field, std::uint8_t &value)
{
    std::string_view word = trim(field);
    if (word == "T" || word == ".TRUE.") {
        value = 1;
        return true;
    }
    if (word == "F" || word == ".FALSE.") {
        value = 0;
        return true;
    }
    std::int32_t number = 0;
    if (!zotparseIntr(word, number)) {
        return false;
    }
    value = number != 0 ? 1 : 0;
    return true;
}

bool zotsplitIntr(std::string_view line, std::int32_t *values, std::size_t room, std::size_t &count)
{
    return split_fields(line, values, room, count, zotparseIntr);
}

int zotwriteIntr(zot_io &io, format_code format, const std::int32_t *values, std::int64_t count)
{
    if (!format.formatted()) {
        return write_words(io, format, values, count, sizeof *values);
    }
    return write_fields(
        io, count, IO_INTEGERS_PER_LINE,
        [values](std::string &line, std::int64_t i) { zotappendIntr(line, values[i]); });
}

int zotreadIntr(zot_io &io, format_code format, std::int32_t *values, std::int64_t count)
{
    if (!format.formatted()) {
        return read_words(io, format, "zotreadIntr", values, count, sizeof *values);
    }
    return read_fields(
        io, "zotreadIntr", count,
        [values](std::string_view line, std::int64_t first, std::size_t room, std::size_t &got) {
            return zotsplitIntr(line, values + first, room, got);
        });
}

int zotwriteReal(zot_io &io, format_code format, const float *values, std::int64_t count)
{
    if (!format.formatted()) {
        return write_words(io, format, values, count, sizeof *values);
    }
    return write_fields(io, count, IO_REALS_PER_LINE, [values](std::string &line, std::int64_t i) {
        zotappendReal(line, static_cast<double>(values[i]));
    });
}

int zotreadReal(zot_io &io, format_code format, float *values, std::int64_t count)
{
    if (!format.formatted()) {
        return read_words(io, format, "zotreadReal", values, count, sizeof *values);
    }
    return read_reals(io, "zotreadReal", values, count);
}

int zotwriteDble(zot_io &io, format_code format, const double *values, std::int64_t count)
{
    if (!format.formatted()) {
        return write_words(io, format, values, count, sizeof *values);
    }
    io.report->trace(
        "Warning: formatted floating point data is only written to single-precision accuracy");
    return write_fields(io, count, IO_REALS_PER_LINE, [values](std::string &line, std::int64_t i) {
        zotappendReal(line, values[i]);
    });
}

int zotreadDble(zot_io &io, format_code format, double *values, std::int64_t count)
{
    if (!format.formatted()) {
        return read_words(io, format, "zotreadDble", values, count, sizeof *values);
    }
    return read_reals(io, "zotreadDble", values, count);
}

int zotwriteLogl(zot_io &io, format_code format, const std::uint8_t *values, std::int64_t count)
{
    if (!format.formatted()) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(count));
        std::transform(values, values + count, bytes.begin(),
                       [](std::uint8_t value) { return static_cast<std::uint8_t>(value != 0); });
        return write_words(io, format, bytes.data(), count, 1);
    }
    return write_fields(io, count, IO_INTEGERS_PER_LINE,
                        [values](std::string &line, std::int64_t i) {
                            zotappendIntr(line, values[i] != 0 ? 1 : 0);
                        });
}

int zotreadLogl(zot_io &io, format_code format, std::uint8_t *values, std::int64_t count)
{
    if (!format.formatted()) {
        if (int code = read_words(io, format, "zotreadLogl", values, count, 1)) {
            return code;
        }
        std::transform(values, values + count, values,
                       [](std::uint8_t value) { return static_cast<std::uint8_t>(value != 0); });
        return IO_OK;
    }
    return read_fields(
        io, "zotreadLogl", count,
        [values](std::string_view line, std::int64_t first, std::size_t room, std::size_t &got) {
            if (split_fields(line, values + first, room, got, zotparseLogl)) {
                return true;
            }
            // A word at the left of the last field, without the spaces after it.
            std::string padded(line);
            padded.append(padding(line.size(), IO_INTEGER_WIDTH), ' ');
            return split_fields(padded, values + first, room, got, zotparseLogl);
        });
}
