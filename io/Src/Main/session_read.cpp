// The requests that read datasets.
#include "io/Src/Main/io_session.h"

#include "io/Src/Main/compressed_data.h"

#include <algorithm>
#include <cstring>

namespace {

void put_text(char *to, const std::string &text)
{
    std::memcpy(to, text.c_str(), text.size() + 1);
}

/// Returns 14 if there are more attributes than slots.
[[nodiscard]] int put_attributes(const std::vector<std::string> &attributes, IO_header &header)
{
    auto count = static_cast<std::int32_t>(attributes.size());
    if (header.attribute_count != nullptr) {
        *header.attribute_count = count;
    }
    if (count == 0) {
        return IO_OK;
    }
    if (header.attributes == nullptr || header.attributes_size < count) {
        return IO_NO_ROOM;
    }
    for (std::size_t i = 0; i < attributes.size(); i++) {
        put_text(header.attributes + i * static_cast<std::size_t>(IO_STRING_SLOT), attributes[i]);
    }
    return IO_OK;
}

void put_format(format_code format, char *to)
{
    if (to != nullptr) {
        to[0] = format.letter;
        to[1] = format.second;
        to[2] = '\0';
    }
}

/// Calls read_data_as(). `asks` says that code 14 is a request for room, not a
/// failure.
[[nodiscard]] int read_or_ask(open_file &file, const located_start &start, std::string_view asked,
                              IO_data &data, bool &asks)
{
    asks = false;
    reading_plan plan;
    if (int code = plan_reading(file, start, asked, plan)) {
        return code;
    }
    asks = !arrays_hold(data, plan.counts());
    return read_planned(file, start, plan, data);
}

/// Copies the values of elements `first` to `first + count` from whole arrays.
void copy_elements(const IO_data &from, const data_type &type, std::int64_t first,
                   std::int64_t count, IO_data &to)
{
    element_counts per_element = type.counts();
    for (std::size_t i = 0; i < per_element.size(); i++) {
        auto kind = static_cast<element_type>(i);
        if (element_of(kind).has_length) {
            for (std::int64_t n = 0; n < count * per_element[i]; n++) {
                put_string(to, n, get_string(from, first * per_element[i] + n, type.string_slot()));
            }
            continue;
        }
        std::size_t bytes = element_word_bytes(kind);
        auto start = static_cast<std::size_t>(first * per_element[i]) * bytes;
        auto length = static_cast<std::size_t>(count * per_element[i]) * bytes;
        if (length > 0) {
            std::memcpy(element_array(to, kind),
                        static_cast<const char *>(element_array(from, kind)) + start, length);
        }
    }
}

} // namespace

int io_session::read_dataset(IO_header &header, IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    located_start start;
    bool asks = false;
    int code = read_located_dataset_start(primary_, data.offsets[0], start);
    if (code == IO_OK) {
        code = read_or_ask(primary_, start, header.type, data, asks);
    }
    if (code == IO_OK || asks) {
        *header.count = start.header.count;
    }
    return asks ? code : add_line(code, "iocnt: read data failed\n");
}

int io_session::read_dataset_header(IO_header &header, const IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    reading_.reset();
    located_start start;
    if (int code = read_located_dataset_start(primary_, data.offsets[0], start)) {
        return add_line(code, "iocnt: read header failed\n");
    }
    const dataset_header &found = start.header;
    put_text(header.what, found.what);
    put_text(header.where, found.where);
    *header.when = found.when;
    *header.count = found.count;
    put_text(header.type, found.type);
    *header.blockfactor = std::max(found.blockfactor, 1);
    put_format(start.format, header.format);
    int code = put_attributes(found.attributes, header);
    reading_.emplace(begun_reading{std::move(start)});
    return code;
}

int io_session::read_data_here(IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    if (!reading_) {
        return report_.error(IO_BAD_FORMAT, "iocnt: no dataset header has been read\n");
    }
    if (!primary_.io.stream.seek(reading_->start.data)) {
        return report_.zotsystemErr(IO_CANNOT_SEEK, "iocnt: read data failed\n");
    }
    bool asks = false;
    int code = read_or_ask(primary_, reading_->start, "", data, asks);
    if (asks) {
        return code;
    }
    reading_.reset();
    return add_line(code, "iocnt: read data failed\n");
}

int io_session::load_blocks(std::int64_t position)
{
    auto source = std::make_unique<block_source>();
    if (int code = read_located_dataset_start(primary_, position, source->start)) {
        return code;
    }
    if (int code = describe_data(primary_, source->start, source->shape)) {
        return code;
    }
    if (int code = check_data_claim(primary_.io, source->shape)) {
        return code;
    }
    const data_shape &shape = source->shape;
    if (!source->storage.allocate(total_counts(shape.type, shape.count),
                                  shape.type.string_slot())) {
        return report_.no_memory("read_located_dataset_as", source->storage.bytes());
    }
    if (int code = read_data_as(primary_, source->start, "", source->storage.data())) {
        return code;
    }
    blocks_ = std::move(source);
    return IO_OK;
}

int io_session::read_block(IO_header &header, IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    // A compressed stream must be read as a whole, so its blocks are kept for the
    // next read.
    if (!blocks_ || blocks_->start.position != data.offsets[0]) {
        blocks_.reset();
        if (int code = load_blocks(data.offsets[0])) {
            return add_line(code, "iocnt: read block failed\n");
        }
    }
    const data_shape &shape = blocks_->shape;
    std::int64_t size = *header.blockfactor > 1 ? *header.blockfactor : shape.blockfactor;
    std::int64_t first = std::max<std::int64_t>(*header.count, 0) * size;
    std::int64_t count = std::clamp<std::int64_t>(shape.count - first, 0, size);
    element_counts counts = total_counts(shape.type, static_cast<std::int32_t>(count));
    if (!arrays_hold(data, counts)) {
        report_array_sizes(data, counts);
        return IO_NO_ROOM;
    }
    copy_elements(blocks_->storage.data(), shape.type, first, count, data);
    *header.count = static_cast<std::int32_t>(count);
    *header.blockfactor = static_cast<std::int32_t>(size);
    return IO_OK;
}

int io_session::read_compressed_data(IO_header &header, IO_data &data)
{
    if (int code = check_open(primary_, "primary")) {
        return code;
    }
    constexpr const char *failure = "iocnt: read compressed data failed\n";
    located_start start;
    data_shape shape;
    int code = read_located_dataset_start(primary_, data.offsets[0], start);
    if (code == IO_OK) {
        code = describe_data(primary_, start, shape);
    }
    if (code != IO_OK) {
        return add_line(code, failure);
    }
    if (int refused = check_compressed(report_, shape.format, shape.type, shape.count)) {
        if (shape.format.formatted()) {
            refused =
                report_.error(IO_BAD_FORMAT, "read_compressed_data: only supports binary data\n");
        }
        return add_line(refused, failure);
    }
    bool asks = false;
    code = read_or_ask(primary_, start, "", data, asks);
    if (code == IO_OK || asks) {
        *header.count = shape.count;
    }
    return asks ? code : add_line(code, failure);
}
