// Reads the start of a dataset, plans its reading, and reads as another type.
#include "io/Src/Main/read_dataset.h"

#include "io/Src/Main/convert_data.h"

namespace {

std::int64_t tag_bytes(format_code format, std::string_view tag)
{
    return static_cast<std::int64_t>(tag.size()) + (format.formatted() ? 1 : 0);
}

[[nodiscard]] int read_format(open_file &file, std::int64_t position, format_code &format)
{
    const io_reporter &report = *file.report;
    if (!file.io.stream.seek(position)) {
        return report.zotsystemErr(IO_CANNOT_SEEK,
                                   "read_located_dataset_start: can't go to the dataset location");
    }
    char bytes[IO_FORMAT_BYTES];
    std::size_t got = file.io.stream.read(bytes, sizeof bytes);
    if (got != sizeof bytes) {
        return report.error(IO_READ_ERROR,
                            "read_located_dataset_start: short read %d reading dataset format",
                            static_cast<int>(got));
    }
    format = {bytes[0], bytes[1]};
    if (!format.live() || bytes[2] != '\n') {
        return report.error(
            IO_READ_ERROR,
            "read_located_dataset_start: the data set location is incorrect (invalid"
            " format char '%c'\n",
            bytes[0]);
    }
    return IO_OK;
}

[[nodiscard]] int bad_length(const open_file &file, std::int64_t length)
{
    return file.report->error(IO_BAD_FILE, "read_located_dataset_start: bad dataset length %lld",
                              static_cast<long long>(length));
}

/// Reads everything in the stored type, then converts it.
[[nodiscard]] int read_converted(open_file &file, const data_shape &shape, const data_type &wanted,
                                 IO_data &data)
{
    element_storage stored;
    element_counts counts = total_counts(shape.type, shape.count);
    if (!stored.allocate(counts, shape.type.string_slot())) {
        return file.report->no_memory("read_located_dataset_as", stored.bytes());
    }
    if (int code = read_data(file.io, shape, stored.data())) {
        return code;
    }
    return convert_data(*file.report, shape.type, stored.data(), wanted, data, shape.count);
}

} // namespace

int read_located_dataset_start(open_file &file, std::int64_t position, located_start &start)
{
    start = located_start();
    start.position = position;
    if (int code = read_format(file, position, start.format)) {
        return code;
    }
    zot_io &io = file.io;
    if (int code = zotreadOffset(io, start.format, start.length)) {
        return code;
    }
    start.start = io.stream.tell();
    std::int64_t size = io.stream.size();
    if (start.length < 1 || start.length > size - start.start) {
        return bad_length(file, start.length);
    }
    start.data_end = start.start + start.length - tag_bytes(start.format, IO_TAG_END_DATASET);
    std::string tag;
    if (int code = zotreadString(io, start.format, IO_TAG_DATASET.size(), tag)) {
        return code;
    }
    if (tag != IO_TAG_DATASET) {
        return file.report->error(IO_BAD_FORMAT,
                                  "read_located_dataset_start: bad data set tag: expected *DATASET"
                                  " got \"%s\"\n",
                                  tag.c_str());
    }
    if (int code = read_header(io, start.format, file.name, start.header)) {
        return code;
    }
    if (int code = read_datatag(io, start.format)) {
        return code;
    }
    start.data = io.stream.tell();
    return start.data <= start.data_end ? IO_OK : bad_length(file, start.length);
}

int describe_data(const open_file &file, const located_start &start, data_shape &shape)
{
    shape.format = start.format;
    shape.count = start.header.count;
    shape.blockfactor = start.header.blockfactor > 0 ? start.header.blockfactor : IO_BLOCKFACTOR;
    shape.end = start.data_end;
    return parseStructure(*file.report, start.header.type, shape.type);
}

int read_end_tag(open_file &file, format_code format)
{
    std::string tag;
    if (int code = zotreadString(file.io, format, IO_TAG_END_DATASET.size(), tag)) {
        return code;
    }
    if (tag != IO_TAG_END_DATASET) {
        return file.report->error(IO_BAD_FORMAT,
                                  "read_located_dataset_as: bad data set end tag: expected"
                                  " *ENDDATASET got \"%s\"\n",
                                  tag.c_str());
    }
    return IO_OK;
}

// 1. Parse both types; check whether one can be converted to the other.
// 2. Compare the sizes that the header claims with the file.
int plan_reading(open_file &file, const located_start &start, std::string_view asked,
                 reading_plan &plan)
{
    const io_reporter &report = *file.report;
    if (int code = describe_data(file, start, plan.stored)) {
        return code;
    }
    plan.wanted = plan.stored.type;
    if (!asked.empty()) {
        if (int code = parseStructure(report, asked, plan.wanted)) {
            return code;
        }
        if (int code = check_conversion(report, start.header.type, plan.stored.type,
                                        std::string(asked), plan.wanted)) {
            return code;
        }
    }
    return check_data_claim(file.io, plan.stored);
}

// 1. Report how much room is needed; stop if the client has less.
// 2. Read, converting if needed, and check that the end tag follows.
int read_planned(open_file &file, const located_start &start, const reading_plan &plan,
                 IO_data &data)
{
    element_counts counts = plan.counts();
    if (!arrays_hold(data, counts)) {
        report_array_sizes(data, counts);
        return IO_NO_ROOM;
    }
    int code = plan.wanted == plan.stored.type
                   ? read_data(file.io, plan.stored, data)
                   : read_converted(file, plan.stored, plan.wanted, data);
    if (code == IO_OK) {
        code = read_end_tag(file, start.format);
    }
    if (code != IO_OK) {
        blank_arrays(data, counts);
    }
    return code;
}

int read_data_as(open_file &file, const located_start &start, std::string_view asked, IO_data &data)
{
    reading_plan plan;
    if (int code = plan_reading(file, start, asked, plan)) {
        return code;
    }
    return read_planned(file, start, plan, data);
}

int read_located_dataset_as(open_file &file, std::int64_t position, std::string_view asked,
                            IO_data &data, located_start &start)
{
    if (int code = read_located_dataset_start(file, position, start)) {
        return code;
    }
    return read_data_as(file, start, asked, data);
}
