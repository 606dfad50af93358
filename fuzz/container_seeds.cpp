// container_seeds FOLDER: writes the seed corpus of the container fuzzer, small
// files of every format, complete ones and ones as a crash leaves them.
#include "io/Src/Main/io_session.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

int print(const char *text, std::int32_t)
{
    std::fputs(text, stderr);
    return 0;
}

int put(io_session &session, const char *type, std::int32_t when, std::int32_t count,
        const char *format, IO_data &data)
{
    io_header_storage storage;
    io_set_text(storage.what, "I");
    io_set_text(storage.where, "P");
    io_set_text(storage.type, type);
    io_set_text(storage.format, format);
    io_set_text(storage.attributes[0], "an attribute");
    storage.attribute_count = when % 2;
    storage.when = when;
    storage.count = count;
    IO_header header = storage.header();
    return session.request(IO_WRITE_PRIMARY_DS, print, &header, &data);
}

int write_file(const std::string &folder, const std::string &format, bool with_arrays)
{
    std::vector<std::int32_t> integers(110, 3);
    std::vector<double> doubles(3, 1.5);
    std::vector<char> strings(20, 'x');
    strings[9] = strings[19] = '\0';
    IO_data data;
    data.integers = integers.data();
    data.integers_size = 110;
    data.doubles = doubles.data();
    data.doubles_size = 3;
    data.strings = strings.data();
    data.strings_size = 2;
    data.string_slot = 10;
    std::string name = folder + "/" + format + (with_arrays ? "-arrays" : "-records");
    data.filename = name.c_str();
    io_session session(io_real_env());
    int code = session.request(IO_OPEN_PRIMARY_WRITE, print, nullptr, &data);
    if (code == IO_OK && with_arrays) {
        code = put(session, "INTR", 1, 110, format.c_str(), data);
    }
    if (code == IO_OK && with_arrays) {
        code = put(session, "DBLE", 2, 3, format.c_str(), data);
    }
    if (code == IO_OK && !with_arrays) {
        code = put(session, "STRC{INTR:1 STRI:3:3}", 3, 2, format.c_str(), data);
    }
    if (code == IO_OK && !with_arrays) {
        code = put(session, "STRI:9", 4, 2, format.c_str(), data);
    }
    std::filesystem::copy_file(name, name + "-crashed",
                               std::filesystem::copy_options::overwrite_existing);
    return code == IO_OK ? session.request(IO_CLOSE_PRIMARY, print, nullptr, &data) : code;
}

} // namespace

int main(int count, char **words)
{
    if (count != 2) {
        std::fputs("usage: container_seeds FOLDER\n", stderr);
        return 2;
    }
    for (const char *format : {"F", "u", "u5", "l", "l9"}) {
        for (bool with_arrays : {true, false}) {
            if (write_file(words[1], format, with_arrays) != IO_OK) {
                return 1;
            }
        }
    }
    return 0;
}
