// Marks datasets as deleted, first in the index, then in the file.
#include "io/Src/Main/delete_ds.h"

namespace {

/// Writes the mark over the format code of the dataset at `position`.
[[nodiscard]] int delete_process_sub(open_file &file, std::int64_t position)
{
    const io_reporter &report = *file.report;
    io_stream &stream = file.io.stream;
    if (!stream.seek(position)) {
        return report.zotsystemErr(IO_CANNOT_SEEK,
                                   "delete_process_sub: can't go to the dataset location");
    }
    char bytes[IO_FORMAT_BYTES];
    if (stream.read(bytes, sizeof bytes) != sizeof bytes) {
        return report.error(IO_READ_ERROR, "delete_process_sub: error reading format tag");
    }
    format_code live = {bytes[0], bytes[1]};
    if (live.deleted()) {
        return IO_OK;
    }
    std::optional<format_code> mark = iofmt_deleted_mark(live);
    if (!mark) {
        return report.error(IO_BAD_FORMAT,
                            "delete_process_sub: invalid format tag, should never arrive here");
    }
    const char over[] = {mark->letter, mark->second};
    if (!stream.seek(position) || !stream.write(over, sizeof over) || !stream.flush()) {
        return report.zotsystemErr(io_write_code(),
                                   "delete_process_sub: (can't write the delete tag) syserr:");
    }
    return IO_OK;
}

[[nodiscard]] int delete_process(open_file &file, const located_dataset &record)
{
    located_dataset line = {};
    if (int code = parseindex(*file.report, file.index.line(record.slot), line)) {
        return file.report->error(code, "delete_process: parseindex failed");
    }
    // The slot first: if the mark cannot be written, the dataset is still not
    // found again.
    file.index.set_status(record.slot, 'N');
    return delete_process_sub(file, line.position);
}

[[nodiscard]] int delete_bywhat(open_file &file, const located_datasets &found)
{
    for (const located_dataset &record : found) {
        if (int code = delete_process(file, record)) {
            return file.report->error(code, "delete_bywhat: delete_process failed\n");
        }
    }
    return IO_OK;
}

} // namespace

int delete_ds(open_file &file, const char *what, const char *where, std::int32_t when)
{
    const io_reporter &report = *file.report;
    located_datasets found;
    if (int code = find_datasets(report, file.index, what, where, when, found)) {
        return report.error(code, "delete_ds: locate_dataset failed\n");
    }
    int code = delete_located(file, found);
    return code == IO_OK ? IO_OK : report.error(code, "delete_ds: delete_bywhat failed\n");
}

int delete_located(open_file &file, const located_datasets &found)
{
    if (int code = begin_change(file)) {
        return code;
    }
    return delete_bywhat(file, found);
}
