// Says which function carries out which request, and owns the open files that
// they share.
#include "io/Src/Main/io_session.h"

#include "io/Src/Main/copy_dataset.h"
#include "io/Src/Main/delete_ds.h"
#include "io/Src/Main/request_table.h"

#include <new>

namespace {

bool is_complete(const IO_header &header)
{
    bool attributes = header.attribute_count == nullptr || *header.attribute_count <= 0 ||
                      header.attributes != nullptr;
    return header.what != nullptr && header.where != nullptr && header.when != nullptr &&
           attributes && header.count != nullptr && header.type != nullptr &&
           header.blockfactor != nullptr;
}

} // namespace

io_session::io_session(io_env &env)
    : env_(env), report_(env), primary_(env, report_), secondary_(env, report_)
{
}

io_session::~io_session()
{
    // The client's routine may not exist any more, and nobody receives a code.
    report_.set_routine(nullptr);
    try {
        drop_begun();
        static_cast<void>(iif_close(primary_));
        static_cast<void>(iif_close(secondary_));
        if (text_.is_open()) {
            static_cast<void>(iif_close_text(text_));
        }
    } catch (const std::bad_alloc &) {
        static_cast<void>(report_.no_memory("iif_close", 0));
    }
}

int io_session::request(io_request request, io_error_routine routine, IO_header *header,
                        IO_data *data)
{
    if (routine == nullptr) {
        return IO_NO_ROUTINE;
    }
    report_.set_routine(routine);
    if (int code = check_arguments(traits_of(request), header, data)) {
        return code;
    }
    // For a request without a header, which uses none of these values.
    std::int32_t no_when = -1;
    IO_header none;
    none.when = &no_when;
    try {
        return dispatch(request, header != nullptr ? *header : none, *data);
    } catch (const std::bad_alloc &) {
        return report_.no_memory("iocntc", 0);
    }
}

int io_session::check_arguments(const request_traits &needs, const IO_header *header,
                                const IO_data *data) const
{
    if (data == nullptr) {
        return report_.error(IO_NO_ROOM, "iocntc: IO_data structure is null\n");
    }
    if (needs.header) {
        if (header == nullptr) {
            return report_.error(IO_NO_ROOM, "iocntc: IO_header structure is null\n");
        }
        if (!is_complete(*header)) {
            return report_.error(IO_NO_ROOM, "iocntc: header input is wrong\n");
        }
    }
    // A locate reports itself how much room it needs.
    if (needs.offsets && (data->offsets == nullptr || (!needs.locates && data->offsets_size < 2))) {
        return report_.error(IO_NO_ROOM, "iocntc: offset array input is wrong\n");
    }
    if (needs.locates && (data->strings == nullptr || data->integers == nullptr)) {
        return report_.error(IO_NO_ROOM, "iocntc: stringarray or intrarray is wrong\n");
    }
    return IO_OK;
}

int io_session::dispatch(io_request request, IO_header &header, IO_data &data)
{
    switch (request) {
    case IO_OPEN_PRIMARY:
        return open(primary_, data, "r", "iocnt: open the primary file failed\n");
    case IO_CLOSE_PRIMARY:
        return close(primary_, "iocnt: close primary file failed\n");
    case IO_OPEN_PRIMARY_WRITE:
        return open(primary_, data, "w", "iocnt: open the primary file failed\n");
    case IO_OPEN_SECONDARY:
        return open(secondary_, data, "w", "iocnt: open the secondary file failed\n");
    case IO_CLOSE_SECONDARY:
        return close(secondary_, "iocnt: close secondary file failed\n");
    case IO_WRITE_PRIMARY_DS:
        return write_whole(primary_, "primary", IO_WRITE_PRIMARY_DS, header, data);
    case IO_WRITE_SECONDARY_DS:
        return write_whole(secondary_, "secondary", IO_WRITE_SECONDARY_DS, header, data);
    case IO_LOCATE_PRIMARY:
        return locate(primary_, "primary", header, data);
    case IO_LOCATE_SECONDARY:
        return locate(secondary_, "secondary", header, data);
    case IO_DELETE_PRIMARY_DS:
        return delete_datasets(header);
    case IO_READ_LOCATED_DS:
        return read_dataset(header, data);
    case IO_READ_HEADER:
        return read_dataset_header(header, data);
    case IO_WRITE_HEADER:
        return write_dataset_header(header, data);
    case IO_READ_DATA:
        return read_data_here(data);
    case IO_WRITE_DATA:
        return write_data_here(data);
    case IO_END_DATASET:
        return end_begun_dataset();
    case IO_COPY_DATASET:
        return copy(header, data);
    case IO_COPY_ALLVALID_DS:
        return copy_many(IO_COPY_ALLVALID_DS, [this] { return copy_all_ds(primary_, secondary_); });
    case IO_READ_BLOCK:
        return read_block(header, data);
    case IO_COPY_WHEN0_DS:
        return copy_many(IO_COPY_WHEN0_DS, [this] { return copy_when0_ds(primary_, secondary_); });
    case IO_COPY_DS_COMPRESS_WHEN:
        return copy_many(IO_COPY_DS_COMPRESS_WHEN, [this, &header] {
            return copy_ds_compress_when(primary_, secondary_, *header.when);
        });
    case IO_OPEN_TEXT:
        return open_text(data);
    case IO_READ_COMPRESSED:
        return read_compressed_data(header, data);
    case IO_WRITE_COMPRESSED:
        return write_compressed_data(header, data);
    case IO_READ_INTEGERS:
        return with_text("iocnt: read integers failed\n",
                         [&] { return read_text_integers(text_, data); });
    case IO_READ_REALS:
        return with_text("iocnt: read reals failed\n",
                         [&] { return read_text_reals(text_, data); });
    case IO_WRITE_TEXT:
        return with_text("iocnt: write text failed\n", [&] { return write_text(text_, data); });
    case IO_CLOSE_TEXT:
        return close_text();
    }
    return report_.error(IO_UNKNOWN_REQUEST, "iocnt: unknown request\n");
}

int io_session::add_line(int code, const char *line) const
{
    return code == IO_OK ? IO_OK : report_.error(code, "%s", line);
}

int io_session::open(open_file &file, const IO_data &data, const char *access, const char *failure)
{
    if (file.mode != open_mode::none) {
        // It has sent its message. The code must be that of the requested
        // opening.
        static_cast<void>(close(file, "iocnt: close the file that was open failed\n"));
    }
    std::string name;
    if (data.filename != nullptr) {
        name = data.filename_length > 0
                   ? std::string(data.filename, static_cast<std::size_t>(data.filename_length))
                   : std::string(data.filename);
    }
    const char *given = data.filename == nullptr ? nullptr : name.c_str();
    return add_line(iif_open(file, given, access), failure);
}

int io_session::close(open_file &file, const char *failure)
{
    if (file.mode == open_mode::none) {
        return check_open(file, &file == &primary_ ? "primary" : "secondary");
    }
    if (&file == &primary_) {
        drop_begun();
    }
    return add_line(iif_close(file), failure);
}

int io_session::check_open(const open_file &file, const char *which) const
{
    if (file.mode != open_mode::none) {
        return IO_OK;
    }
    return report_.error(IO_NO_OPEN_FILE, "iocnt: no %s file is opened\n", which);
}

/// Drops what was begun on the primary file: headers read, blocks kept, and a
/// dataset whose end was not written.
void io_session::drop_begun()
{
    reading_.reset();
    blocks_.reset();
    if (begun_) {
        static_cast<void>(abort_dataset(primary_, begun_->pending, IO_OK)); // returns the same code
        begun_.reset();
    }
}

int io_session::make_busy(open_file &file, const char *which, io_request request, bool may_create)
{
    if (int code = check_open(file, which)) {
        return code;
    }
    if (&file == &primary_) {
        drop_begun();
    }
    if (int code = setfilebusyflag(file, may_create)) {
        return report_.error(code, "iocnt: setfilebusyflag failed when req =%s\n",
                             traits_of(request).name);
    }
    return IO_OK;
}

int io_session::locate(open_file &file, const char *which, const IO_header &header, IO_data &data)
{
    if (int code = check_open(file, which)) {
        return code;
    }
    int code = locate_dataset(report_, file.index, header.what, header.where, *header.when,
                              scratch_, data);
    if (code == IO_NOT_FOUND) {
        return report_.error(code, "%s", io_code_text(code));
    }
    return code == IO_NO_ROOM ? code : add_line(code, "iocnt: locate dataset failed\n");
}

int io_session::open_text(const IO_data &data)
{
    if (text_.is_open()) {
        static_cast<void>(close_text()); // its message is sent; the code is that of the opening
    }
    return add_line(iif_open_text(env_, report_, data.filename, data.access, text_),
                    "iocnt: open the plain text file failed\n");
}

int io_session::close_text()
{
    return with_text("iocnt: close the plain text file failed\n",
                     [this] { return iif_close_text(text_); });
}

template <typename Work>
int io_session::with_text(const char *failure, Work work)
{
    if (!text_.is_open()) {
        return report_.error(IO_NO_OPEN_FILE, "iocnt: no plain text file is opened\n");
    }
    return add_line(work(), failure);
}

template <typename Copy>
int io_session::copy_many(io_request request, Copy copy)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    if (int code = make_busy(secondary_, "secondary", request)) {
        return code;
    }
    return add_line(copy(), "iocnt: copy_dataset failed\n");
}

int iocntc(std::uint32_t request, io_error_routine routine, IO_header *header, IO_data *data)
{
    static io_session session(io_real_env());
    // A number that is not a request is refused like other wrong input.
    return session.request(static_cast<io_request>(request), routine, header, data);
}
