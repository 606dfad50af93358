// Opens a container, makes it writable, flushes and closes it.
#include "io/Src/Main/open_file.h"

#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/decimal.h"
#include "io/Src/Main/index_file.h"
#include "io/Src/Main/lock_file.h"

#include <cerrno>
#include <new>

namespace {

constexpr std::int64_t info_tag_bytes = static_cast<std::int64_t>(IO_TAG_INFO.size()) + 1;
constexpr int busy_attempts = 10;
constexpr int busy_wait_ms = 2000;
constexpr std::size_t size_line_part = 4096; // a longer line is read in parts of this size

/// Opens the stream with the given access code; null and errno on failure.
std::unique_ptr<io_file> open_stream(open_file &file, char access, bool may_create)
{
    const char *name = file.name.c_str();
    if (access == 'r') {
        file.mode = open_mode::read;
        return file.env->open(name, io_open::read);
    }
    file.mode = open_mode::write;
    std::unique_ptr<io_file> stream = file.env->open(name, io_open::update);
    if (!stream && access == 'd') {
        file.report->trace("Failed to get read/write permission, trying read-only");
        stream = file.env->open(name, io_open::read);
        file.mode = stream ? open_mode::read : open_mode::write;
    }
    if (!stream && may_create) {
        int number = errno;
        file.report->trace("Failed to get read/write permission");
        // Exclusive, because a file that exists but cannot be opened must not be
        // emptied.
        stream = file.env->open(name, io_open::create_new);
        if (!stream && errno == EEXIST) {
            errno = number;
        }
    }
    return stream;
}

/// Returns the code of `work`. Without memory, returns 28 and gives a message that
/// names the function.
template <typename Work>
[[nodiscard]] int guarded(const open_file &file, const char *function, Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        auto bytes = static_cast<std::int64_t>(lock_file_name_bytes(file));
        return file.report->no_memory(function, bytes);
    }
}

/// Undoes an opening; returns `code`.
[[nodiscard]] int abandon(open_file &file, int code)
{
    // The code is the reason why the opening failed. Nothing has been written
    // yet.
    if (file.io.stream) {
        static_cast<void>(file.io.stream.close());
    }
    static_cast<void>(guarded(file, "iif_set_lock", [&] { return release_lock(file); }));
    file.mode = open_mode::none;
    file.changed = false;
    file.stored_index = false;
    file.index.clear();
    return code;
}

[[nodiscard]] int check_start(open_file &file)
{
    const io_reporter &report = *file.report;
    char start[info_tag_bytes + 1];
    if (file.io.stream.read(start, sizeof start) != sizeof start) {
        return report.error(IO_BAD_FILE, "iif_open: can't read the first seven characters");
    }
    if (std::string_view(start, IO_TAG_INFO.size()) != IO_TAG_INFO) {
        return report.error(IO_BAD_FILE, "iif_open: the file is not in ZOT-5.x format");
    }
    char end = start[IO_TAG_INFO.size()];
    if (end == '\r' && start[IO_TAG_INFO.size() + 1] == '\n') {
        return report.error(
            IO_BAD_FILE,
            "openfile: corrupt file: the file contains Windows-style CR-LF line endings.  If this "
            "is"
            " a copy of the original file, please try again, ensuring you do the copy in binary"
            " mode.");
    }
    if (end == '\r') {
        return report.error(
            IO_BAD_FILE,
            "openfile: corrupt file: the line endings are incorrect.  If this is a copy of the"
            " original file, please try again, ensuring you do the copy in binary mode.");
    }
    if (end != '\n') {
        return report.error(IO_BAD_FILE,
                            "openfile: corrupt file: trailing garbage after start tag.");
    }
    return IO_OK;
}

/// Reads the line of the file size. The length of the line is the offset width.
[[nodiscard]] int read_recorded_size(open_file &file, std::int64_t &recorded)
{
    const io_reporter &report = *file.report;
    if (!file.io.stream.seek(info_tag_bytes)) {
        return report.error(IO_BAD_FILE, "iif_open: fail to read the INFO tag\n");
    }
    std::string line;
    std::int64_t width = 0;
    io_stream::line_end end = io_stream::at_limit;
    while (end == io_stream::at_limit) {
        end = file.io.stream.read_line(size_line_part, line);
        width += static_cast<std::int64_t>(line.size());
    }
    if (end == io_stream::at_end_of_file) {
        return report.error(IO_READ_ERROR, "iif_open: fail to read the filesize\n");
    }
    if (width != IO_OFFSET_WIDTH && width != IO_OFFSET_WIDTH_OLD) {
        return report.error(IO_READ_ERROR,
                            "iif_open: offset format %lld is not currently supported (or bad file"
                            " header)\n",
                            static_cast<long long>(width));
    }
    file.io.offset_width = static_cast<int>(width);
    if (!parse_decimal(line, recorded)) {
        return report.error(IO_READ_ERROR, "iif_open: fail to read the filesize\n");
    }
    std::string tag;
    if (file.io.stream.read_line(IO_TAG_END_INFO.size(), tag) != io_stream::at_lf ||
        tag != IO_TAG_END_INFO) {
        return report.error(IO_BAD_FILE, "iif_open: fail to read the INFO tag\n");
    }
    report.trace("iif_open: offset format is %d", file.io.offset_width);
    return IO_OK;
}

[[nodiscard]] int load_index(open_file &file, std::int64_t recorded, std::int64_t size,
                             bool force_rebuild)
{
    const io_reporter &report = *file.report;
    if (recorded == size && !force_rebuild) {
        if (create_indextable(file, size) == IO_OK) {
            file.stored_index = true;
            return IO_OK;
        }
        report.notice("iif_open: unable to read the stored index, attempting to rebuild it");
    } else if (recorded != size) {
        report.trace(
            "iif_open: filesize has changed (recorded %lld, actual %lld), recreating index\n",
            static_cast<long long>(recorded), static_cast<long long>(size));
    }
    file.changed = true;
    return recreate_indextable(file, size);
}

[[nodiscard]] int read_container(open_file &file, open_options options)
{
    std::int64_t size = file.io.stream.size();
    if (size < 0) {
        return file.report->zotsystemErr(
            IO_CANNOT_SEEK, "iif_open: can't go to the end of the file  %s\n", file.name.c_str());
    }
    if (size == 0) {
        return iif_create_empty(file);
    }
    if (int code = check_start(file)) {
        return code;
    }
    std::int64_t recorded = 0;
    if (int code = read_recorded_size(file, recorded)) {
        return code;
    }
    file.index_position = first_dataset_position(file);
    return options.load_index ? load_index(file, recorded, size, options.force_rebuild) : IO_OK;
}

[[nodiscard]] int write_size(open_file &file)
{
    const io_reporter &report = *file.report;
    // If the index is shorter than the previous one, old bytes would remain after
    // the new end.
    if (!file.io.stream.truncate(file.io.stream.tell())) {
        return report.zotsystemErr(io_write_code(), "iif_flush: can't go to end of file ");
    }
    std::int64_t size = file.io.stream.size();
    if (size < 0) {
        return report.zotsystemErr(IO_CANNOT_TELL, "iif_flush: can't get the filesize");
    }
    if (!file.io.stream.seek(info_tag_bytes)) {
        return report.zotsystemErr(IO_CANNOT_SEEK, "iif_flush: can't skip start of INFO dataset");
    }
    int code = zotwriteOffset(file.io, IO_FORMATTED, size);
    if (code == IO_OK && !file.io.stream.flush()) {
        code = io_write_code();
    }
    return code == IO_OK ? IO_OK : report.error(code, "iif_flush: can't write filesize");
}

void trace_crash_tag(const open_file &file, crash_tag result)
{
    switch (result) {
    case crash_tag::written:
        file.report->trace("closefile index fail: wrote crash tag OK");
        break;
    case crash_tag::not_reached:
        file.report->trace("closefile index fail: can't go to index location");
        break;
    case crash_tag::not_written:
        file.report->trace("closefile index fail: can't write file end tag");
        break;
    }
}

[[nodiscard]] int write_index_and_size(open_file &file)
{
    file.report->trace("iif_flush: writing final index");
    if (!file.io.stream.seek(file.index_position)) {
        return file.report->zotsystemErr(IO_CANNOT_SEEK, "iif_flush: can't go to index location");
    }
    int code = write_index(file);
    if (code == IO_OK && !file.io.stream.flush()) {
        code = io_write_code();
    }
    if (code != IO_OK) {
        return file.report->error(code, "iif_flush: write_index failed");
    }
    return write_size(file);
}

/// Locks, opens, and reads what is needed. After a failure, the caller calls
/// abandon().
[[nodiscard]] int iif_open_file(open_file &file, char access, open_options options)
{
    const io_reporter &report = *file.report;
    bool writes = access == 'w' || access == 'a';
    lock_request lock = writes ? IO_LOCK_WRITE : IO_LOCK_READ;
    if (int code = guarded(file, "iif_set_lock", [&] { return iif_set_lock(file, lock); })) {
        return code;
    }
    std::unique_ptr<io_file> stream =
        open_stream(file, access, options.may_create && access != 'r');
    if (!stream) {
        return report.zotsystemErr(IO_CANNOT_SEEK, "iif_open: can't open file %s",
                                   file.name.c_str());
    }
    report.trace("iif_open: Opened file %s", file.name.c_str());
    file.io.stream = io_stream(std::move(stream));
    file.changed = writes;
    return read_container(file, options);
}

/// Does the work of setfilebusyflag(). The file must be open for writing.
[[nodiscard]] int mark_busy(open_file &file)
{
    if (file.lock_level > 1 || (file.lock_level == 1 && file.lock_was_zero)) {
        return file.report->error(
            IO_LOCKED,
            "setfilebusyflag: more than one user is reading %s or the wrong lock file %s exists\n",
            file.name.c_str(), lock_file_name(file).c_str());
    }
    if (file.lock_level >= 0) {
        if (int code = write_busy_level(file)) {
            return code;
        }
    }
    file.changed = true;
    return IO_OK;
}

// 1. Until the file is open for writing: close, wait, open again, ten times.
// 2. Refuse where others read it.
// 3. Write −1 into the lock file, once.
[[nodiscard]] int become_busy(open_file &file, bool may_create)
{
    const io_reporter &report = *file.report;
    std::string name = file.name;
    for (int attempt = 0; file.mode != open_mode::write; attempt++) {
        if (attempt == busy_attempts) {
            return report.error(IO_PERMISSION,
                                "setfilebusyflag: Unable to open file %s for write access after %d "
                                "attempts. Possible"
                                " cause: Concurrent access by another program.\n",
                                name.c_str(), busy_attempts);
        }
        static_cast<void>(iif_close(file)); // the file was only read; it is opened again
        file.env->sleep(busy_wait_ms);
        open_options options;
        options.may_create = may_create;
        int code = iif_open(file, name.c_str(), "d", options);
        if (code != IO_OK && code != IO_LOCKED) {
            return code;
        }
    }
    return mark_busy(file);
}

} // namespace

std::int64_t first_dataset_position(const open_file &file)
{
    return info_tag_bytes + file.io.offset_width + 1 +
           static_cast<std::int64_t>(IO_TAG_END_INFO.size()) + 1;
}

int iif_open(open_file &file, const char *name, const char *access, open_options options)
{
    const io_reporter &report = *file.report;
    if (name == nullptr) {
        return report.error(IO_CANNOT_OPEN, "iif_open: filename is NULL\n");
    }
    char kind = access == nullptr ? '\0' : *access;
    if (kind != 'r' && kind != 'w' && kind != 'a' && kind != 'd') {
        return report.error(IO_CANNOT_OPEN, "iif_open: unknown access code %s\n",
                            access == nullptr ? "" : access);
    }
    io_env &env = *file.env;
    std::string copy(name); // the name may belong to this file
    file = open_file(env, report);
    file.name = std::move(copy);
    file.io.report = &report;
    int code = guarded(file, "iif_open_file", [&] { return iif_open_file(file, kind, options); });
    return code == IO_OK ? IO_OK : abandon(file, code);
}

int iif_create_empty(open_file &file)
{
    file.io.offset_width = IO_OFFSET_WIDTH;
    file.index_position = first_dataset_position(file);
    file.index.clear();
    if (file.mode != open_mode::write) {
        return IO_OK;
    }
    file.changed = true;
    int code = write_tag(file.io, IO_FORMATTED, IO_TAG_INFO);
    if (code == IO_OK) {
        code = zotwriteOffset(file.io, IO_FORMATTED, 0);
    }
    if (code == IO_OK) {
        code = write_tag(file.io, IO_FORMATTED, IO_TAG_END_INFO);
    }
    if (code == IO_OK && !file.io.stream.flush()) {
        code = io_write_code();
    }
    return code == IO_OK
               ? IO_OK
               : file.report->error(code, "iif_create_empty: can't write the INFO block\n");
}

int iif_flush(open_file &file)
{
    if (!file.changed || file.mode != open_mode::write) {
        return IO_OK;
    }
    if (int code = write_index_and_size(file)) {
        trace_crash_tag(file, put_crash_tag(file, file.index_position, IO_FORMATTED));
        return code;
    }
    file.changed = false;
    file.stored_index = true;
    return IO_OK;
}

int iif_close(open_file &file)
{
    if (file.mode == open_mode::none) {
        return IO_OK;
    }
    const io_reporter &report = *file.report;
    report.trace("iif_close: Closing file %s", file.name.c_str());
    int code = guarded(file, "iif_flush", [&] { return iif_flush(file); });
    if (!file.io.stream.close() && code == IO_OK) {
        code = report.zotsystemErr(IO_CANNOT_CLOSE, "iif_close: error closing file");
    }
    int unlocked = guarded(file, "iif_set_lock", [&] { return release_lock(file); });
    file.mode = open_mode::none;
    file.changed = false;
    file.stored_index = false;
    file.index.clear();
    return code != IO_OK ? code : unlocked;
}

int setfilebusyflag(open_file &file, bool may_create)
{
    return guarded(file, "setfilebusyflag", [&] { return become_busy(file, may_create); });
}

int begin_change(open_file &file)
{
    file.changed = true;
    if (!file.stored_index) {
        return IO_OK;
    }
    if (put_crash_tag(file, file.index_position, {'u', ' '}) != crash_tag::written) {
        return file.report->zotsystemErr(io_write_code(),
                                         "begin_change: can't write file end tag\n");
    }
    file.stored_index = false;
    return IO_OK;
}

crash_tag put_crash_tag(open_file &file, std::int64_t position, format_code format)
{
    io_stream &stream = file.io.stream;
    stream.discard();
    if (!stream.truncate(position) || !stream.seek(position)) {
        return crash_tag::not_reached;
    }
    bool written = write_tag(file.io, format, IO_TAG_CRASH) == IO_OK && stream.flush();
    return written ? crash_tag::written : crash_tag::not_written;
}
