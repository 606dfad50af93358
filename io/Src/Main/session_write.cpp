// The requests that change files.
#include "io/Src/Main/io_session.h"

#include "io/Src/Main/compressed_data.h"
#include "io/Src/Main/copy_dataset.h"
#include "io/Src/Main/delete_ds.h"
#include "io/Src/Main/glob.h"

#include <cstring>

namespace {

dataset_header take_header(const IO_header &header)
{
    dataset_header taken;
    taken.what = zottrimEnd(header.what);
    taken.where = zottrimEnd(header.where);
    taken.when = *header.when;
    std::int32_t attributes = header.attribute_count != nullptr ? *header.attribute_count : 0;
    for (std::int32_t i = 0; i < attributes; i++) {
        const char *slot = header.attributes + i * IO_STRING_SLOT;
        // A slot without a NUL has one character too many.
        taken.attributes.emplace_back(zottrimEnd({slot, strnlen(slot, IO_STRING_SLOT)}));
    }
    taken.type = zottrimEnd(header.type);
    taken.count = *header.count;
    taken.blockfactor = *header.blockfactor;
    return taken;
}

std::string_view asked_format(const IO_header &header)
{
    return header.format != nullptr ? std::string_view(header.format) : std::string_view();
}

} // namespace

int io_session::write_whole(open_file &file, const char *which, io_request request,
                            const IO_header &header, const IO_data &data)
{
    if (int code = check_open(file, which)) {
        return code;
    }
    dataset_header taken = take_header(header);
    if (!header_is_writable(taken)) {
        return report_.error(IO_NO_ROOM, "iocntc: header input is wrong\n");
    }
    if (int code = make_busy(file, which, request)) {
        return code;
    }
    return add_line(write_dataset(file, asked_format(header), taken, data),
                    "iocnt: write dataset failed\n");
}

int io_session::write_dataset_header(const IO_header &header, IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    dataset_header taken = take_header(header);
    if (!header_is_writable(taken)) {
        return report_.error(IO_NO_ROOM, "iocntc: header input is wrong\n");
    }
    if (int code = make_busy(primary_, "primary", IO_WRITE_HEADER)) {
        return code;
    }
    begun_dataset begun;
    int code = prepare_dataset(primary_, asked_format(header), std::move(taken), begun.pending,
                               begun.shape);
    if (code == IO_OK) {
        code = begin_dataset(primary_, begun.pending);
    }
    if (code != IO_OK) {
        return add_line(code, "iocnt: write header failed\n");
    }
    begun.next = primary_.io.stream.tell();
    data.offsets[0] = begun.pending.position;
    data.offsets[1] = 0;
    begun_ = std::move(begun);
    return IO_OK;
}

int io_session::write_data_here(const IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    if (!begun_ || begun_->has_data) {
        return report_.error(IO_BAD_FORMAT, "iocnt: no dataset header has been written\n");
    }
    if (!arrays_hold(data, total_counts(begun_->shape.type, begun_->shape.count))) {
        // Nothing is lost yet: the client may send the request again with more
        // data.
        return report_.error(IO_NO_ROOM, "write_data: not enough data for the element count\n");
    }
    int code = primary_.io.stream.seek(begun_->next) ? write_data(primary_.io, begun_->shape, data)
                                                     : IO_CANNOT_SEEK;
    if (code != IO_OK) {
        static_cast<void>(abort_dataset(primary_, begun_->pending, code)); // returns the same code
        begun_.reset();
        return add_line(code, "iocnt: write data failed\n");
    }
    begun_->next = primary_.io.stream.tell();
    begun_->has_data = true;
    return IO_OK;
}

int io_session::end_begun_dataset()
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    if (!begun_ || (!begun_->has_data && begun_->shape.count > 0)) {
        return report_.error(IO_BAD_FORMAT, "iocnt: no dataset data has been written\n");
    }
    begun_dataset begun = std::move(*begun_);
    begun_.reset();
    int code = IO_OK;
    if (!primary_.io.stream.seek(begun.next)) {
        code = abort_dataset(primary_, begun.pending, IO_CANNOT_SEEK);
    } else if (!begun.has_data) {
        code = write_data(primary_.io, begun.shape, IO_data());
    }
    if (code == IO_OK) {
        code = end_dataset(primary_, begun.pending);
    }
    return add_line(code, "iocnt: write dataset failed\n");
}

int io_session::write_compressed_data(const IO_header &header, IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    dataset_header taken = take_header(header);
    if (!header_is_writable(taken)) {
        return report_.error(IO_NO_ROOM, "iocntc: header input is wrong\n");
    }
    pending_dataset pending;
    data_shape shape;
    int code = prepare_dataset(primary_, asked_format(header), taken, pending, shape);
    if (code == IO_OK) {
        code = check_compressed(report_, shape.format, shape.type, shape.count);
    }
    if (code == IO_OK) {
        code = make_busy(primary_, "primary", IO_WRITE_COMPRESSED);
    }
    if (code == IO_OK) {
        code = write_dataset(primary_, asked_format(header), taken, data, &pending);
    }
    if (code != IO_OK) {
        return add_line(code, "iocnt: write compressed data failed\n");
    }
    data.offsets[0] = pending.position;
    data.offsets[1] = pending.length;
    return IO_OK;
}

int io_session::delete_datasets(const IO_header &header)
{
    // A deletion must not create a missing file.
    if (int code = make_busy(primary_, "primary", IO_DELETE_PRIMARY_DS, false)) {
        return code;
    }
    return add_line(delete_ds(primary_, header.what, header.where, *header.when),
                    "iocnt: delete_ds failed\n");
}

int io_session::copy_matches(const dataset_name &name)
{
    located_datasets found;
    if (int code = find_datasets(report_, primary_.index, name.what.c_str(), name.where.c_str(),
                                 name.when, found)) {
        if (code == IO_NOT_FOUND) {
            report_.notice("%s", io_code_text(code));
        }
        return code;
    }
    for (const located_dataset &record : found) {
        if (int code = copy_dataset(primary_, record.position, secondary_, nullptr)) {
            return code;
        }
    }
    return IO_OK;
}

int io_session::copy(const IO_header &header, const IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    dataset_name name = {std::string(zottrimEnd(header.what)),
                         std::string(zottrimEnd(header.where)), *header.when};
    bool many = glob_has_pattern(name.what) || glob_has_pattern(name.where) || name.when < 0;
    bool by_position = !many && data.offsets[0] > 0;
    dataset_header renamed;
    renamed.what = name.what;
    renamed.where = name.where;
    if (by_position && !header_is_writable(renamed)) {
        return report_.error(IO_NO_ROOM, "iocntc: header input is wrong\n");
    }
    if (int code = make_busy(secondary_, "secondary", IO_COPY_DATASET)) {
        return code;
    }
    int code = by_position ? copy_dataset(primary_, data.offsets[0], secondary_, &name)
                           : copy_matches(name);
    return add_line(code, "iocnt: copy_dataset failed\n");
}
