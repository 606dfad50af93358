// Fills headers and arrays for requests, and prints what they return.
#include "io/tests/io_client.h"

#include <cstdio>

namespace {

std::string messages;

std::string code_text(int code)
{
    return "code " + std::to_string(code);
}

void set_name(io_header_storage &header, const char *what, const char *where, std::int32_t when)
{
    header = named_header(what, where);
    header.when = when;
}

void set_data(io_header_storage &header, const char *type, std::size_t count, const char *format)
{
    io_set_text(header.type, type);
    header.count = static_cast<std::int32_t>(count);
    io_set_text(header.format, format == nullptr ? "" : format);
}

template <typename Value>
void append_values(std::string &text, const Value *values, std::int64_t count, const char *form)
{
    for (std::int64_t i = 0; i < count; i++) {
        char buffer[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        std::snprintf(buffer, sizeof buffer, form, values[i]);
#pragma GCC diagnostic pop
        text += text.empty() ? "" : " ";
        text += buffer;
    }
}

std::string values_text(const IO_data &data, std::size_t slot)
{
    std::string text;
    for (std::int64_t i = 0; i < data.strings_size; i++) {
        text += text.empty() ? "" : " ";
        text += std::string("\"") + (data.strings + static_cast<std::size_t>(i) * slot) + "\"";
    }
    append_values(text, data.chars, data.chars_size, "%c");
    append_values(text, data.integers, data.integers_size, "%d");
    append_values(text, data.reals, data.reals_size, "%.9g");
    append_values(text, data.doubles, data.doubles_size, "%.17g");
    append_values(text, data.logicals, data.logicals_size, "%d");
    return text;
}

std::size_t slot_of(const std::string &type_text)
{
    io_memory_env env;
    io_reporter quiet(env);
    data_type type;
    return parseStructure(quiet, type_text, type) == IO_OK ? type.string_slot() : 1;
}

} // namespace

io_header_storage named_header(std::string_view what, std::string_view where, std::string_view type)
{
    io_header_storage header;
    io_set_text(header.what, what);
    io_set_text(header.where, where);
    io_set_text(header.type, type);
    return header;
}

std::string take_messages()
{
    std::string taken;
    taken.swap(messages);
    return taken;
}

int collect_message(const char *text, std::int32_t length)
{
    messages.append(text, static_cast<std::size_t>(length));
    return 0;
}

io_arrays::io_arrays(IO_data &data, std::size_t string_slot)
    : strings_(static_cast<std::size_t>(data.strings_size) * string_slot + 1),
      chars_(static_cast<std::size_t>(data.chars_size) + 1),
      integers_(static_cast<std::size_t>(data.integers_size) + 1),
      reals_(static_cast<std::size_t>(data.reals_size) + 1),
      doubles_(static_cast<std::size_t>(data.doubles_size) + 1),
      logicals_(static_cast<std::size_t>(data.logicals_size) + 1)
{
    data.string_slot = static_cast<std::int64_t>(string_slot);
    data.strings = strings_.data();
    data.chars = chars_.data();
    data.integers = integers_.data();
    data.reals = reals_.data();
    data.doubles = doubles_.data();
    data.logicals = logicals_.data();
}

int io_client::request(io_request number, const char *filename)
{
    IO_data data;
    data.filename = filename;
    return session_.request(number, collect_message, nullptr, &data);
}

int io_client::request(io_request number, IO_header head, IO_data &data)
{
    return session_.request(number, collect_message, &head, &data);
}

int io_client::write_integers(const char *what, const char *where, std::int32_t when,
                              const std::vector<std::int32_t> &values, const char *format,
                              io_request number)
{
    set_name(header, what, where, when);
    set_data(header, "INTR", values.size(), format);
    std::vector<std::int32_t> copy = values;
    IO_data data;
    data.integers = copy.data();
    data.integers_size = static_cast<std::int64_t>(copy.size());
    return request(number, header.header(), data);
}

int io_client::write_doubles(const char *what, const char *where, std::int32_t when,
                             const std::vector<double> &values, const char *format)
{
    set_name(header, what, where, when);
    set_data(header, "DBLE", values.size(), format);
    std::vector<double> copy = values;
    IO_data data;
    data.doubles = copy.data();
    data.doubles_size = static_cast<std::int64_t>(copy.size());
    return request(IO_WRITE_PRIMARY_DS, header.header(), data);
}

int io_client::write_strings(const char *what, const char *where, std::int32_t when,
                             const std::vector<std::string> &lines, const char *format)
{
    set_name(header, what, where, when);
    set_data(header, "STRI", lines.size(), format);
    std::vector<char> slots(lines.size() * static_cast<std::size_t>(IO_STRING_SLOT) + 1);
    for (std::size_t i = 0; i < lines.size(); i++) {
        std::snprintf(slots.data() + i * static_cast<std::size_t>(IO_STRING_SLOT),
                      static_cast<std::size_t>(IO_STRING_SLOT), "%s", lines[i].c_str());
    }
    IO_data data;
    data.strings = slots.data();
    data.strings_size = static_cast<std::int64_t>(lines.size());
    return request(IO_WRITE_PRIMARY_DS, header.header(), data);
}

int io_client::remove(const char *what, const char *where, std::int32_t when)
{
    set_name(header, what, where, when);
    IO_data data;
    return request(IO_DELETE_PRIMARY_DS, header.header(), data);
}

std::string io_client::locate(const char *what, const char *where, std::int32_t when,
                              io_request number)
{
    set_name(header, what, where, when);
    constexpr std::size_t most = 1000;
    std::vector<char> strings(2 * most * static_cast<std::size_t>(IO_STRING_SLOT));
    std::vector<std::int32_t> whens(most);
    std::vector<std::int64_t> offsets(2 * most);
    IO_data data;
    data.strings = strings.data();
    data.strings_size = 2 * most;
    data.integers = whens.data();
    data.integers_size = most;
    data.offsets = offsets.data();
    data.offsets_size = 2 * most;
    if (int code = request(number, header.header(), data)) {
        return code_text(code);
    }
    std::string text;
    for (std::size_t i = 0; i < static_cast<std::size_t>(data.matches); i++) {
        const char *slot = strings.data() + 2 * i * static_cast<std::size_t>(IO_STRING_SLOT);
        text += std::string(slot) + " " + (slot + IO_STRING_SLOT) + " " + std::to_string(whens[i]) +
                "\n";
    }
    return text;
}

std::int64_t io_client::position(const char *what, const char *where, std::int32_t when)
{
    set_name(header, what, where, when);
    std::vector<char> strings(2000 * static_cast<std::size_t>(IO_STRING_SLOT));
    std::vector<std::int32_t> whens(1000);
    std::vector<std::int64_t> offsets(2000);
    IO_data data;
    data.strings = strings.data();
    data.strings_size = 2000;
    data.integers = whens.data();
    data.integers_size = 1000;
    data.offsets = offsets.data();
    data.offsets_size = 2000;
    return request(IO_LOCATE_PRIMARY, header.header(), data) == IO_OK ? offsets[0] : 0;
}

std::string io_client::read(const char *what, const char *where, std::int32_t when, const char *as)
{
    std::int64_t at = position(what, where, when);
    return at == 0 ? code_text(IO_NOT_FOUND) : read_at(at, as);
}

std::string io_client::read_at(std::int64_t position, const char *as)
{
    std::int64_t offsets[] = {position, 0};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    std::string type = as;
    if (type.empty()) {
        header = io_header_storage();
        if (int code = request(IO_READ_HEADER, header.header(), data)) {
            return code_text(code);
        }
        type = header.type;
    }
    set_data(header, type.c_str(), 0, "");
    int code = request(IO_READ_LOCATED_DS, header.header(), data);
    if (code != IO_OK && code != IO_NO_ROOM) {
        return code_text(code);
    }
    std::size_t slot = slot_of(type);
    io_arrays arrays(data, slot);
    if (code == IO_NO_ROOM) {
        code = request(IO_READ_LOCATED_DS, header.header(), data);
    }
    return code == IO_OK ? values_text(data, slot) : code_text(code);
}
