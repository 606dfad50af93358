// Opens the plain text file, reads numbers from it and writes lines.
#include "io/Src/Main/plain_text.h"

#include "io/Src/Main/element_arrays.h"
#include "io/Src/Main/zot_numbers.h"

#include <cerrno>
#include <cstring>

namespace {

std::unique_ptr<io_file> open_text(io_env &env, const char *name, char access)
{
    if (access == 'r') {
        return env.open(name, io_open::read);
    }
    if (access == 'w') {
        return env.open(name, io_open::truncate);
    }
    std::unique_ptr<io_file> file = env.open(name, io_open::update);
    return file || errno != ENOENT ? std::move(file) : env.open(name, io_open::create_new);
}

} // namespace

int iif_open_text(io_env &env, const io_reporter &report, const char *name, const char *access,
                  plain_text &file)
{
    if (name == nullptr) {
        return report.error(IO_CANNOT_OPEN, "iif_open: filename is NULL\n");
    }
    char kind = access == nullptr ? 'r' : *access;
    if (kind != 'r' && kind != 'w' && kind != 'a') {
        return report.error(IO_CANNOT_OPEN, "iif_open: unknown access code %s\n", access);
    }
    std::unique_ptr<io_file> stream = open_text(env, name, kind);
    if (!stream) {
        return report.zotsystemErr(IO_CANNOT_SEEK, "iif_open: can't open file %s", name);
    }
    report.trace("iif_open: Opened file %s", name);
    file = plain_text();
    file.name = name;
    file.io.report = &report;
    file.io.stream = io_stream(std::move(stream));
    std::int64_t size = kind == 'a' ? file.io.stream.size() : 0;
    if (!file.io.stream.seek(size)) {
        static_cast<void>(file.io.stream.close()); // only the failure of the seek is reported
        return report.zotsystemErr(IO_CANNOT_SEEK,
                                   "iif_open: can't go to the end of the file  %s\n", name);
    }
    return IO_OK;
}

int iif_close_text(plain_text &file)
{
    const io_reporter &report = *file.io.report;
    report.trace("iif_close_text: Closing file %s", file.name.c_str());
    if (!file.io.stream.close()) {
        return report.zotsystemErr(IO_CANNOT_CLOSE, "iif_close: error closing file");
    }
    return IO_OK;
}

int read_text_integers(plain_text &file, IO_data &data)
{
    element_counts counts = {};
    counts[IO_INTR] = data.integers_size;
    if (!arrays_hold(data, counts)) {
        return file.io.report->error(IO_NO_ROOM, "iocntc: stringarray or intrarray is wrong\n");
    }
    int code = zotreadIntr(file.io, IO_FORMATTED, data.integers, data.integers_size);
    if (code != IO_OK) {
        blank_arrays(data, counts);
    }
    return code;
}

int read_text_reals(plain_text &file, IO_data &data)
{
    element_counts counts = {};
    counts[IO_REAL] = data.reals_size;
    if (!arrays_hold(data, counts)) {
        return file.io.report->error(IO_NO_ROOM, "iocntc: real array is wrong\n");
    }
    int code = zotreadReal(file.io, IO_FORMATTED, data.reals, data.reals_size);
    if (code != IO_OK) {
        blank_arrays(data, counts);
    }
    return code;
}

int write_text(plain_text &file, const IO_data &data)
{
    const io_reporter &report = *file.io.report;
    if (!arrays_hold(data, {data.strings_size, 0, 0, 0, 0, 0})) {
        return report.error(IO_NO_ROOM, "iocntc: stringarray or intrarray is wrong\n");
    }
    for (std::int64_t i = 0; i < data.strings_size; i++) {
        std::string line(zottrimEnd(get_string(data, i, std::string_view::npos)));
        line += '\n';
        if (!file.io.stream.write(line.data(), line.size())) {
            return report.zotsystemErr(io_write_code(), "write_text: (fwrite failed) syserr:");
        }
    }
    if (!file.io.stream.flush()) {
        return report.zotsystemErr(io_write_code(), "write_text: (fwrite failed) syserr:");
    }
    return IO_OK;
}
