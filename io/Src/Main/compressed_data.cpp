// Writes and reads compressed arrays: a length and a stream, or blocks of both.
#include "io/Src/Main/compressed_data.h"

#include "io/Src/Main/byte_order.h"
#include "io/Src/Main/io_gzip.h"
#include "io/Src/Main/zot_numbers.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace {

/// Not initialised: every byte used is written first.
using byte_buffer = std::unique_ptr<char[]>;

constexpr std::int64_t part_bytes = 256 * 1024;

byte_buffer allocate(std::int64_t bytes)
{
    return byte_buffer(new (std::nothrow) char[static_cast<std::size_t>(bytes)]);
}

/// Writes the length and the stream, part by part. If the stream has one part,
/// its length is written before it. Otherwise the length is written to that place
/// at the end.
class array_writer
{
public:
    array_writer(zot_io &io, format_code format, element_type type)
        : io_(io), format_(format), type_(type),
          word_(static_cast<std::int64_t>(element_word_bytes(type))), length_at_(io.stream.tell())
    {
    }

    [[nodiscard]] int write(const void *data, std::int32_t count)
    {
        const io_reporter &report = *io_.report;
        std::int64_t buffer_bytes = std::min(count * word_, part_bytes);
        byte_buffer buffer = allocate(buffer_bytes);
        if (buffer == nullptr) {
            return report.no_memory("write_compressed_dataarray", buffer_bytes);
        }
        auto take = [this](const void *bytes, std::size_t part, bool last) {
            code_ = put(bytes, part, last);
            return code_ == IO_OK;
        };
        std::int64_t words = io_gzip(report, element_of(type_).gzip_letter, format_.level(), data,
                                     count, {buffer.get(), buffer_bytes}, take);
        if (words == io_gzip_refused) {
            return code_;
        }
        if (words > count) {
            report.notice(
                "write_compressed_dataarray: additional data from compression: got %d, expected"
                " max %d",
                static_cast<int>(words), count);
        }
        std::int64_t bytes = words * word_;
        bool good =
            words > 0 && words <= count && bytes <= std::numeric_limits<std::int32_t>::max();
        return good ? complete(bytes) : put_stored_mark();
    }

private:
    bool begun() const { return io_.stream.tell() != length_at_; }

    [[nodiscard]] int put(const void *bytes, std::size_t count, bool last)
    {
        if (!begun()) {
            if (int code = put_length(last ? static_cast<std::int64_t>(count) : 0)) {
                return code;
            }
            length_known_ = last;
        }
        return io_.stream.write(bytes, count) ? IO_OK : failed();
    }

    [[nodiscard]] int put_length(std::int64_t bytes)
    {
        return zotwriteOffset(io_, format_, bytes) == IO_OK ? IO_OK : failed();
    }

    /// Flushes all of the array, because a later write that fails has another
    /// code.
    [[nodiscard]] int complete(std::int64_t bytes)
    {
        if (length_known_) {
            return io_.stream.flush() ? IO_OK : failed();
        }
        std::int64_t after = io_.stream.tell();
        if (!io_.stream.seek(length_at_)) {
            return failed();
        }
        if (int code = put_length(bytes)) {
            return code;
        }
        return io_.stream.seek(after) ? IO_OK : failed();
    }

    /// The part of the stream that is written already is not longer than the data
    /// that follows, so the data replaces it.
    [[nodiscard]] int put_stored_mark()
    {
        if (begun() && !io_.stream.seek(length_at_)) {
            return failed();
        }
        int code = put_length(IO_STORED);
        return code == IO_OK ? IO_COMPRESSION : code;
    }

    [[nodiscard]] int failed() const
    {
        return io_.report->zotsystemErr(IO_WRITE_ERROR,
                                        "write_compressed_dataarray: (fwrite failed) syserr:");
    }

    zot_io &io_;
    format_code format_;
    element_type type_;
    std::int64_t word_;
    std::int64_t length_at_; ///< position of the length
    bool length_known_ = false;
    int code_ = IO_OK; ///< from the part that could not be written
};

class array_reader
{
public:
    array_reader(zot_io &io, format_code format, element_type type, void *data, std::int32_t count,
                 std::int32_t blockfactor, std::int64_t data_end)
        : io_(io), format_(format), word_(static_cast<std::int64_t>(element_word_bytes(type))),
          data_(static_cast<char *>(data)), left_(count * word_), block_(blockfactor * word_),
          data_end_(data_end)
    {
    }

    [[nodiscard]] int read()
    {
        while (left_ > 0) {
            std::int64_t length = 0;
            if (zotreadOffset(io_, format_, length) != IO_OK) {
                return io_.report->error(
                    IO_READ_ERROR,
                    "read_compressed_dataarray: can not read the compressed data length\n");
            }
            int code = length == IO_STORED ? stored() : compressed(length);
            if (code != IO_OK) {
                return code;
            }
            first_ = false;
        }
        return IO_OK;
    }

private:
    std::int64_t rest_of_area() const { return data_end_ - io_.stream.tell(); }

    void advance(std::int64_t bytes)
    {
        data_ += data_ != nullptr ? bytes : 0;
        left_ -= bytes;
    }

    /// Data after −1: all the rest if the area has exactly so many bytes,
    /// otherwise one block.
    [[nodiscard]] int stored()
    {
        std::int64_t bytes = rest_of_area() == left_ ? left_ : std::min(left_, block_);
        auto wanted = static_cast<std::size_t>(bytes);
        std::size_t got = bytes <= rest_of_area() ? take(wanted) : 0;
        if (got != wanted) {
            return zotshortRead(io_, "read_compressed_dataarray", got, wanted);
        }
        advance(bytes);
        return IO_OK;
    }

    std::size_t take(std::size_t bytes)
    {
        if (data_ != nullptr) {
            return io_.stream.read(data_, bytes);
        }
        std::size_t taken = 0;
        while (taken < bytes && has_part()) {
            auto wanted = std::min(bytes - taken, static_cast<std::size_t>(part_bytes));
            std::size_t got = io_.stream.read(part_.get(), wanted);
            taken += got;
            if (got != wanted) {
                break;
            }
        }
        return taken;
    }

    bool has_part()
    {
        if (part_ == nullptr) {
            part_ = allocate(part_bytes);
        }
        return part_ != nullptr;
    }

    [[nodiscard]] int compressed(std::int64_t length)
    {
        const io_reporter &report = *io_.report;
        if (length <= 0 || length > std::numeric_limits<std::int32_t>::max()) {
            return report.error(IO_COMPRESSION,
                                "read_compressed_dataarray: bad compressed data length %lld\n",
                                static_cast<long long>(length));
        }
        if (length > rest_of_area()) {
            return zotshortRead(io_, "read_compressed_dataarray",
                                static_cast<std::size_t>(std::max<std::int64_t>(rest_of_area(), 0)),
                                static_cast<std::size_t>(length));
        }
        return inflate_part(length);
    }

    /// Inflates one stream: the first may contain everything or one block, later
    /// ones contain a block. The stream is read in parts that fit in the
    /// processor's cache.
    [[nodiscard]] int inflate_part(std::int64_t length)
    {
        const io_reporter &report = *io_.report;
        if (!has_part()) {
            return report.error(IO_NO_MEMORY, "read_compressed_dataarray: malloc failed\n");
        }
        std::int64_t after = io_.stream.tell() + length;
        bool short_read = false;
        auto source = [&](const void *&bytes) {
            bytes = part_.get();
            auto wanted = static_cast<std::size_t>(std::min(after - io_.stream.tell(), part_bytes));
            std::size_t got = io_.stream.read(part_.get(), wanted);
            short_read = short_read || got != wanted;
            return got;
        };
        std::int64_t expected = first_ ? left_ : std::min(left_, block_);
        std::int64_t produced = 0;
        int code = io_inflate(report, source, data_, expected, produced);
        if (short_read) {
            return zotshortRead(io_, "read_compressed_dataarray", 0,
                                static_cast<std::size_t>(length));
        }
        if (code != IO_OK) {
            return code;
        }
        bool one_block = first_ && produced == block_ && produced < left_;
        if (!one_block) {
            if (int wrong = io_gunzip_exactly(report, produced, expected)) {
                return wrong;
            }
        }
        advance(produced);
        if (!io_.stream.seek(after)) {
            return report.zotsystemErr(IO_CANNOT_SEEK, "read_compressed_dataarray: fseek failed");
        }
        return IO_OK;
    }

    zot_io &io_;
    format_code format_;
    std::int64_t word_;
    char *data_;
    std::int64_t left_;  ///< bytes still to come
    std::int64_t block_; ///< bytes of a block
    std::int64_t data_end_;
    bool first_ = true;
    byte_buffer part_; ///< compressed bytes to be read or written
};

[[nodiscard]] int bad_compressed_format(const io_reporter &report, const char *function, int code,
                                        format_code format)
{
    return report.error(code, "%s: bad compressed format %c%c\n", function, format.letter,
                        format.second);
}

} // namespace

int compression_wanted(const io_reporter &report, format_code format, const data_type &type,
                       std::int32_t count, bool &wanted)
{
    wanted = format.compressed() && count >= IO_COMPRESS_FROM && !type.structure &&
             element_of(type.single()).has_blocks;
    if (wanted && format.level() < 1) {
        return report.error(IO_COMPRESSION,
                            "read_unfmt_structure: the compress level in the data is wrong\n");
    }
    return IO_OK;
}

int check_compressed(const io_reporter &report, format_code format, const data_type &type,
                     std::int32_t count)
{
    if (!format.compressed()) {
        return bad_compressed_format(report, "read_compressed_dataarray", IO_NOT_COMPRESSED,
                                     format);
    }
    bool compressed = false;
    if (int code = compression_wanted(report, format, type, count, compressed)) {
        return code;
    }
    return compressed ? IO_OK : IO_NOT_COMPRESSED;
}

int write_compressed_dataarray(zot_io &io, format_code format, element_type type, const void *data,
                               std::int32_t count)
{
    const io_reporter &report = *io.report;
    if (!format.compressed()) {
        return bad_compressed_format(report, "write_compressed_dataarray", IO_BAD_FORMAT, format);
    }
    return array_writer(io, format, type).write(data, count);
}

int read_compressed_dataarray(zot_io &io, format_code format, element_type type, void *data,
                              std::int32_t count, std::int32_t blockfactor, std::int64_t data_end)
{
    if (!format.compressed()) {
        return bad_compressed_format(*io.report, "read_compressed_dataarray", IO_BAD_FORMAT,
                                     format);
    }
    array_reader reader(io, format, type, data, count, blockfactor, data_end);
    if (int code = reader.read()) {
        return code;
    }
    if (format.swapped() && data != nullptr) {
        swap_bytes(data, static_cast<std::size_t>(count), element_word_bytes(type));
    }
    return IO_OK;
}
