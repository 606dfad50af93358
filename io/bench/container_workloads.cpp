// The work that is measured: large arrays, many small datasets, opening,
// locating.
#include "io/bench/container_workloads.h"

#include <cmath>
#include <cstdio>
#include <filesystem>

namespace container_workloads {

namespace {

constexpr const char *place = "ZONE 1";
constexpr int small_values = 4;

int print(const char *text, std::int32_t)
{
    std::fputs(text, stderr);
    return 0;
}

int request(io_session &session, io_request number, IO_header *header, IO_data &data)
{
    return session.request(number, print, header, &data);
}

int open(io_session &session, io_request number, const std::string &file)
{
    IO_data data;
    data.filename = file.c_str();
    return request(session, number, nullptr, data);
}

int close(io_session &session)
{
    IO_data data;
    return request(session, IO_CLOSE_PRIMARY, nullptr, data);
}

void set_name(io_header_storage &header, const std::string &what, const char *type,
              std::size_t count)
{
    io_set_text(header.what, what);
    io_set_text(header.where, place);
    io_set_text(header.type, type);
    header.when = 0;
    header.count = static_cast<std::int32_t>(count);
}

int write_one(const std::string &file, const char *type, std::size_t count, const char *format,
              IO_data &data)
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    io_session session(io_real_env());
    if (int code = open(session, IO_OPEN_PRIMARY_WRITE, file)) {
        return code;
    }
    io_header_storage storage;
    set_name(storage, "FIELD", type, count);
    io_set_text(storage.format, format);
    IO_header header = storage.header();
    if (int code = request(session, IO_WRITE_PRIMARY_DS, &header, data)) {
        return code;
    }
    return close(session);
}

/// Room for one match of a locate.
struct location
{
    char strings[2 * IO_STRING_SLOT];
    std::int32_t when = 0;
    std::int64_t offsets[2] = {};

    IO_data data()
    {
        IO_data data;
        data.strings = strings;
        data.strings_size = 2;
        data.integers = &when;
        data.integers_size = 1;
        data.offsets = offsets;
        data.offsets_size = 2;
        return data;
    }
};

int read_one(const std::string &file, const char *type, IO_data &data)
{
    io_session session(io_real_env());
    if (int code = open(session, IO_OPEN_PRIMARY, file)) {
        return code;
    }
    io_header_storage storage;
    set_name(storage, "FIELD", type, 0);
    IO_header header = storage.header();
    location where;
    IO_data located = where.data();
    if (int code = request(session, IO_LOCATE_PRIMARY, &header, located)) {
        return code;
    }
    data.offsets = where.offsets;
    data.offsets_size = 2;
    if (int code = request(session, IO_READ_LOCATED_DS, &header, data)) {
        return code;
    }
    return close(session);
}

std::uint64_t scramble(std::uint64_t number)
{
    number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9U;
    number = (number ^ (number >> 27)) * 0x94d049bb133111ebU;
    return number ^ (number >> 31);
}

} // namespace

std::vector<double> sample_doubles(std::size_t bytes)
{
    std::vector<double> values(bytes / sizeof(double));
    for (std::size_t i = 0; i < values.size(); i++) {
        double smooth = std::sin(static_cast<double>(i) * 1e-4) * 300 + 288.15;
        double noise = static_cast<double>(scramble(i) % 1000) * 1e-6;
        values[i] = std::round((smooth + noise) * 1e6) / 1e6;
    }
    return values;
}

std::vector<std::int32_t> sample_integers(std::size_t bytes)
{
    std::vector<std::int32_t> values(bytes / sizeof(std::int32_t));
    for (std::size_t i = 0; i < values.size(); i++) {
        values[i] = static_cast<std::int32_t>(i / 6 + scramble(i) % 200);
    }
    return values;
}

int write_doubles(const std::string &file, const char *format, const std::vector<double> &values)
{
    IO_data data;
    data.doubles = const_cast<double *>(values.data()); // only read
    data.doubles_size = static_cast<std::int64_t>(values.size());
    return write_one(file, "DBLE", values.size(), format, data);
}

int write_integers(const std::string &file, const char *format,
                   const std::vector<std::int32_t> &values)
{
    IO_data data;
    data.integers = const_cast<std::int32_t *>(values.data()); // only read
    data.integers_size = static_cast<std::int64_t>(values.size());
    return write_one(file, "INTR", values.size(), format, data);
}

int read_doubles(const std::string &file, std::vector<double> &values)
{
    IO_data data;
    data.doubles = values.data();
    data.doubles_size = static_cast<std::int64_t>(values.size());
    return read_one(file, "DBLE", data);
}

int read_integers(const std::string &file, std::vector<std::int32_t> &values)
{
    IO_data data;
    data.integers = values.data();
    data.integers_size = static_cast<std::int64_t>(values.size());
    return read_one(file, "INTR", data);
}

std::string small_name(int number)
{
    char text[32];
    std::snprintf(text, sizeof text, "G/FIELD %07d", number);
    return text;
}

int append_small(const std::string &file, int count)
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    io_session session(io_real_env());
    if (int code = open(session, IO_OPEN_PRIMARY_WRITE, file)) {
        return code;
    }
    io_header_storage storage;
    set_name(storage, "", "INTR", small_values);
    io_set_text(storage.format, "u");
    IO_header header = storage.header();
    for (int number = 0; number < count; number++) {
        io_set_text(storage.what, small_name(number));
        std::int32_t values[small_values] = {number, 1, 2, 3};
        IO_data data;
        data.integers = values;
        data.integers_size = small_values;
        if (int code = request(session, IO_WRITE_PRIMARY_DS, &header, data)) {
            return code;
        }
    }
    return close(session);
}

int open_and_close(const std::string &file)
{
    io_session session(io_real_env());
    if (int code = open(session, IO_OPEN_PRIMARY, file)) {
        return code;
    }
    return close(session);
}

small_datasets::small_datasets(const std::string &file)
    : session_(io_real_env()), code_(open(session_, IO_OPEN_PRIMARY, file))
{
    int count = code_ == IO_OK ? session_.primary()->index.count() : 0;
    for (int number = 0; number < count; number++) {
        names_.push_back(small_name(number));
    }
}

small_datasets::~small_datasets()
{
    if (code_ == IO_OK) {
        close(session_);
    }
}

int small_datasets::locate(const std::vector<std::uint32_t> &numbers)
{
    io_header_storage storage;
    set_name(storage, "", "INTR", 0);
    IO_header header = storage.header();
    location where;
    for (std::uint32_t number : numbers) {
        header.what = names_[number].data();
        IO_data data = where.data();
        if (int code = request(session_, IO_LOCATE_PRIMARY, &header, data)) {
            return code;
        }
    }
    return IO_OK;
}

std::int64_t small_datasets::scan(const char *pattern)
{
    io_header_storage storage;
    set_name(storage, pattern, "INTR", 0);
    io_set_text(storage.where, "*");
    IO_header header = storage.header();
    location where;
    IO_data data = where.data();
    int code = request(session_, IO_LOCATE_PRIMARY, &header, data);
    return code == IO_OK || code == IO_NO_ROOM ? data.matches : 0;
}

} // namespace container_workloads
