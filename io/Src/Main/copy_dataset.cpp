// Copies datasets byte by byte, or value by value if the format must change.
#include "io/Src/Main/copy_dataset.h"

#include "io/Src/Main/read_dataset.h"
#include "io/Src/Main/write_dataset.h"

#include <algorithm>
#include <memory>

namespace {

constexpr std::int64_t block_bytes = 1024 * 1024;

[[nodiscard]] int check_source(open_file &from, std::int64_t position)
{
    char bytes[IO_FORMAT_BYTES] = {};
    bool there =
        from.io.stream.seek(position) && from.io.stream.read(bytes, sizeof bytes) == sizeof bytes;
    format_code format = {bytes[0], bytes[1]};
    if (there && format.live()) {
        return IO_OK;
    }
    return from.report->error(
        IO_BAD_FORMAT,
        "copy_dataset: the source data set location is incorrect: bad format type in %c%c",
        bytes[0], bytes[1]);
}

/// Reads the start of the source, and checks that its data ends where its length
/// says.
[[nodiscard]] int open_source(open_file &from, std::int64_t position, located_start &source)
{
    if (int code = check_source(from, position)) {
        return code;
    }
    if (int code = read_located_dataset_start(from, position, source)) {
        return code;
    }
    if (!from.io.stream.seek(source.data_end)) {
        return from.report->zotsystemErr(IO_CANNOT_SEEK, "copy_dataset: fseek failed");
    }
    return read_end_tag(from, source.format);
}

[[nodiscard]] int copy_bytes(open_file &from, const located_start &source, open_file &to)
{
    const io_reporter &report = *to.report;
    std::int64_t left = source.data_end - source.data;
    auto blocks = static_cast<int>(left / block_bytes);
    auto buffer = std::make_unique_for_overwrite<char[]>(
        static_cast<std::size_t>(std::min(left, block_bytes)));
    if (!from.io.stream.seek(source.data)) {
        return report.zotsystemErr(IO_CANNOT_SEEK, "copy_dataset: fseek failed");
    }
    for (int block = 1; left > 0; block++) {
        auto part = static_cast<std::size_t>(std::min(left, block_bytes));
        bool whole = block <= blocks;
        std::size_t got = from.io.stream.read(buffer.get(), part);
        if (got != part && whole) {
            return report.error(
                IO_READ_ERROR,
                "copy_dataset: read data block %d/%d failed: read %d bytes, expected"
                " %d, dataset is %lld bytes",
                block, blocks, static_cast<int>(got), static_cast<int>(part),
                static_cast<long long>(source.length));
        }
        if (got != part) {
            return report.error(IO_READ_ERROR, "copy_dataset: read remaining data failed");
        }
        if (!to.io.stream.write(buffer.get(), part)) {
            return report.error(io_write_code(), whole
                                                     ? "copy_dataset: write data block failed"
                                                     : "copy_dataset: write remaining data failed");
        }
        left -= static_cast<std::int64_t>(part);
    }
    return IO_OK;
}

bool keeps_its_bytes(const located_start &source, const data_shape &shape)
{
    return source.format.formatted() || source.format.compressed() || shape.type.structure ||
           element_of(shape.type.single()).has_length;
}

/// Reads the data and writes it again in the default format.
[[nodiscard]] int copy_anew(open_file &from, const located_start &source, const data_shape &shape,
                            open_file &to)
{
    if (int code = check_data_claim(from.io, shape)) {
        return code;
    }
    element_storage storage;
    if (!storage.allocate(total_counts(shape.type, shape.count), shape.type.string_slot())) {
        return to.report->no_memory("copy_dataset", storage.bytes());
    }
    located_start again;
    if (int code = read_located_dataset_as(from, source.position, "", storage.data(), again)) {
        return code;
    }
    return write_dataset(to, "", source.header, storage.data());
}

[[nodiscard]] int copy_compressing(open_file &from, std::int64_t position, open_file &to)
{
    located_start source;
    data_shape shape;
    if (int code = check_source(from, position)) {
        return code;
    }
    if (int code = read_located_dataset_start(from, position, source)) {
        return code;
    }
    if (int code = describe_data(from, source, shape)) {
        return code;
    }
    if (keeps_its_bytes(source, shape)) {
        return copy_dataset(from, position, to, nullptr);
    }
    return copy_anew(from, source, shape, to);
}

/// Calls copy(position) for every live dataset for which wanted(record) is true.
template <typename Wanted, typename Copy>
[[nodiscard]] int copy_each(open_file &from, Wanted wanted, Copy copy)
{
    for (std::int32_t slot = 0; slot < from.index.count(); slot++) {
        located_dataset record = {};
        if (int code = parseindex(*from.report, from.index.line(slot), record)) {
            return code;
        }
        if (from.index.status(slot) != 'Y' || !wanted(record)) {
            continue;
        }
        if (int code = copy(record.position)) {
            return from.report->error(code, "copy_all_ds: copy_dataset failed on %s/%s/%d",
                                      record.what, record.where, record.when);
        }
    }
    return IO_OK;
}

} // namespace

int copy_dataset(open_file &from, std::int64_t position, open_file &to, const dataset_name *name)
{
    located_start source;
    if (int code = open_source(from, position, source)) {
        return code;
    }
    pending_dataset pending;
    pending.format = source.format;
    pending.header = source.header;
    if (name != nullptr) {
        pending.header.what = name->what;
        pending.header.where = name->where;
        pending.header.when = name->when;
    }
    to.report->trace("Copying dataset %s:%s:%d to %s:%s:%d", source.header.what.c_str(),
                     source.header.where.c_str(), source.header.when, pending.header.what.c_str(),
                     pending.header.where.c_str(), pending.header.when);
    if (int code = begin_dataset(to, pending)) {
        return code;
    }
    if (int code = copy_bytes(from, source, to)) {
        return abort_dataset(to, pending, code);
    }
    return end_dataset(to, pending);
}

int copy_all_ds(open_file &from, open_file &to)
{
    if (int code = copy_each(
            from, [](const located_dataset &) { return true; },
            [&](std::int64_t position) { return copy_dataset(from, position, to, nullptr); })) {
        return code;
    }
    int code = update_index(*to.report, to.index);
    return code == IO_OK ? IO_OK : to.report->error(code, "copy_all_ds: update_index failed\n");
}

int copy_when0_ds(open_file &from, open_file &to)
{
    return copy_each(
        from, [](const located_dataset &record) { return record.when == 0; },
        [&](std::int64_t position) { return copy_dataset(from, position, to, nullptr); });
}

int copy_ds_compress_when(open_file &from, open_file &to, std::int32_t when)
{
    return copy_each(
        from, [when](const located_dataset &record) { return when < 0 || record.when == when; },
        [&](std::int64_t position) { return copy_compressing(from, position, to); });
}
