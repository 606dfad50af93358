// Begins, ends and aborts a dataset. Its lengths are written last.
#include "io/Src/Main/write_dataset.h"

#include "io/Src/Main/compressed_data.h"

namespace {

/// Element count times element size. Every result above the limit is treated like
/// the limit.
std::int64_t data_bytes(const data_type &type, std::int32_t count)
{
    std::int64_t bytes = type.bytes();
    bool large = bytes > 0 && count > (IO_WIDE_FROM - 1) / bytes;
    return large ? IO_WIDE_FROM : count * bytes;
}

[[nodiscard]] int write_parts(open_file &file, pending_dataset &pending)
{
    const io_reporter &report = *file.report;
    zot_io &io = file.io;
    pending.start = io.stream.tell();
    if (int code = write_tag(io, pending.format, IO_TAG_DATASET)) {
        return report.error(code, "write_dataset: can't write dataset tag\n");
    }
    if (int code = write_header(io, pending.format, pending.header)) {
        return report.error(code, "write_dataset: can't write dataset header\n");
    }
    if (int code = write_datatag(io, pending.format)) {
        return report.error(code, "write_dataset: can't write datatag\n");
    }
    return IO_OK;
}

[[nodiscard]] int write_code_and_placeholder(open_file &file, const pending_dataset &pending)
{
    const io_reporter &report = *file.report;
    zot_io &io = file.io;
    if (!io.stream.seek(pending.position)) {
        return report.zotsystemErr(IO_CANNOT_SEEK,
                                   "write_dataset: (can't go to the dataset location) syserr:");
    }
    const char code[IO_FORMAT_BYTES] = {pending.format.letter, pending.format.second, '\n'};
    if (!io.stream.write(code, sizeof code)) {
        return report.zotsystemErr(io_write_code(),
                                   "write_dataset: (can't write the format string) syserr:");
    }
    if (int failed = zotwriteOffset(io, pending.format, 0)) {
        return report.error(failed, "write_dataset: can't write dataset length\n");
    }
    if (!io.stream.flush()) {
        return report.zotsystemErr(io_write_code(),
                                   "write_dataset: (can't write the format string) syserr:");
    }
    return IO_OK;
}

/// Writes the second length and the tag after it, then the first length.
[[nodiscard]] int write_lengths(open_file &file, const pending_dataset &pending)
{
    const io_reporter &report = *file.report;
    zot_io &io = file.io;
    if (int code = zotwriteOffset(io, pending.format, pending.length)) {
        return report.error(code, "write_dataset: can't write dataset length\n");
    }
    std::int64_t end = io.stream.tell();
    int code = write_tag(io, pending.format, IO_TAG_CRASH);
    if (code == IO_OK && !io.stream.flush()) {
        code = io_write_code();
    }
    if (code != IO_OK) {
        return report.zotsystemErr(code, "write_dataset: can't write file end tag\n");
    }
    bool there = io.stream.seek(pending.position + static_cast<std::int64_t>(IO_FORMAT_BYTES));
    code = there ? zotwriteOffset(io, pending.format, pending.length) : IO_CANNOT_SEEK;
    if (code == IO_OK && !io.stream.flush()) {
        code = io_write_code();
    }
    if (code != IO_OK) {
        return report.zotsystemErr(code, "write_dataset: can't write dataset length\n");
    }
    if (!io.stream.seek(end)) {
        return report.zotsystemErr(IO_CANNOT_SEEK,
                                   "write_dataset: (can't go to the end of the dataset) syserr:");
    }
    return IO_OK;
}

[[nodiscard]] int finish(open_file &file, pending_dataset &pending)
{
    const io_reporter &report = *file.report;
    if (int code = write_tag(file.io, pending.format, IO_TAG_END_DATASET)) {
        return report.error(code, "write_dataset: can't write dataset end tag\n");
    }
    pending.length = file.io.stream.tell() - pending.start;
    if (int code = write_lengths(file, pending)) {
        return code;
    }
    const dataset_header &header = pending.header;
    std::string line = format_index_line('Y', header.what, header.where, header.when,
                                         pending.length, pending.position);
    if (int code = file.index.insert_index(report, line)) {
        return code;
    }
    file.index_position = file.io.stream.tell();
    return IO_OK;
}

} // namespace

int prepare_dataset(open_file &file, std::string_view asked_format, dataset_header header,
                    pending_dataset &pending, data_shape &shape)
{
    const io_reporter &report = *file.report;
    if (int code = parseStructure(report, header.type, shape.type)) {
        return code;
    }
    if (int code = iofmt_choose(report, *file.env, asked_format,
                                data_bytes(shape.type, header.count), shape.format)) {
        return code;
    }
    if (!shape.format.live()) {
        // Refused before a byte is written. The writer of offsets has the best
        // message.
        int code = zotwriteOffset(file.io, shape.format, 0);
        return report.error(code, "write_dataset: can't write dataset length\n");
    }
    bool compressed = false;
    if (int code = compression_wanted(report, shape.format, shape.type, header.count, compressed)) {
        return code;
    }
    header.blockfactor = header_blockfactor(shape.format, header.blockfactor);
    shape.count = header.count;
    shape.blockfactor = header.blockfactor;
    pending = pending_dataset();
    pending.format = shape.format;
    pending.header = std::move(header);
    return IO_OK;
}

int begin_dataset(open_file &file, pending_dataset &pending)
{
    if (int code = begin_change(file)) {
        return code;
    }
    pending.position = file.index_position;
    int code = write_code_and_placeholder(file, pending);
    if (code == IO_OK) {
        code = write_parts(file, pending);
    }
    return code == IO_OK ? IO_OK : abort_dataset(file, pending, code);
}

int end_dataset(open_file &file, pending_dataset &pending)
{
    int code = finish(file, pending);
    return code == IO_OK ? IO_OK : abort_dataset(file, pending, code);
}

int abort_dataset(open_file &file, const pending_dataset &pending, int code)
{
    const io_reporter &report = *file.report;
    report.trace("write_dataset aborting");
    // The partial dataset may use the only room that there was for the index.
    switch (put_crash_tag(file, pending.position, pending.format)) {
    case crash_tag::written:
        break;
    case crash_tag::not_reached:
        report.notice("write_dataset abort: fseek failed");
        break;
    case crash_tag::not_written:
        report.notice("write_dataset abort: can't write file end tag\n");
        break;
    }
    if (!file.io.stream.seek(pending.position)) {
        report.notice("write_dataset abort: second fseek failed");
    }
    return code;
}

int write_dataset(open_file &file, std::string_view asked_format, const dataset_header &header,
                  const IO_data &data, pending_dataset *written)
{
    pending_dataset pending;
    data_shape shape;
    if (int code = prepare_dataset(file, asked_format, header, pending, shape)) {
        return code;
    }
    if (!arrays_hold(data, total_counts(shape.type, shape.count))) {
        return file.report->error(IO_NO_ROOM,
                                  "write_data: not enough data for the element count\n");
    }
    if (int code = begin_dataset(file, pending)) {
        return code;
    }
    if (int code = write_data(file.io, shape, data)) {
        file.report->notice("write_dataset: can't write dataset data\n");
        return abort_dataset(file, pending, code);
    }
    int code = end_dataset(file, pending);
    if (written != nullptr) {
        *written = std::move(pending);
    }
    return code;
}
