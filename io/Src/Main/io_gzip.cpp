// Calls zlib for arrays, with buffers whose size does not depend on the arrays.
#include "io/Src/Main/io_gzip.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <zlib.h>

namespace {

constexpr int default_level = 5;
constexpr std::int64_t zlib_most = std::numeric_limits<uInt>::max();

/// zlib counts in 32 bits, so it gets a larger array part by part.
uInt next_part(std::int64_t left, std::int64_t most = zlib_most)
{
    return static_cast<uInt>(std::min(left, most));
}

/// A place for bytes that nobody needs.
struct dump
{
    static constexpr std::int64_t bytes = 64 * 1024;
    std::array<Bytef, bytes> memory;
};

Bytef *bytes_of(const void *memory)
{
    // zlib does not write to its input, but its interface does not say so.
    return static_cast<Bytef *>(const_cast<void *>(memory));
}

/// Z_STREAM_END if the stream ends with the last byte of its buffer. zlib may have written
/// that byte without reporting the end: it does this if there is space for one more byte.
[[nodiscard]] int end_of_room(z_stream &stream)
{
    Bytef *end = stream.next_out;
    Bytef beyond = 0;
    stream.next_out = &beyond;
    stream.avail_out = 1;
    int result = deflate(&stream, Z_FINISH);
    stream.next_out = end;
    return result == Z_STREAM_END && stream.avail_out == 1 ? Z_STREAM_END : Z_BUF_ERROR;
}

/// Calls deflate() until the stream ends, `in_left` bytes are used, or the sink
/// refuses. The last part is in the buffer; the sink gets the parts before it.
[[nodiscard]] int deflate_all(z_stream &stream, std::int64_t in_left, io_deflate_buffer buffer,
                              const io_deflate_sink &take, bool &refused)
{
    std::int64_t room = in_left;
    int result = Z_OK;
    while (result == Z_OK) {
        if (stream.avail_in == 0) {
            stream.avail_in = next_part(in_left);
            in_left -= stream.avail_in;
        }
        if (stream.avail_out == 0 && room == 0) {
            return in_left > 0 ? Z_BUF_ERROR : end_of_room(stream);
        }
        if (stream.avail_out == 0) {
            if (stream.total_out > 0) {
                refused = !take(buffer.memory, static_cast<std::size_t>(buffer.bytes), false);
            }
            if (refused) {
                return Z_BUF_ERROR;
            }
            stream.next_out = bytes_of(buffer.memory);
            stream.avail_out = next_part(room, buffer.bytes);
            room -= stream.avail_out;
        }
        result = deflate(&stream, in_left > 0 ? Z_NO_FLUSH : Z_FINISH);
    }
    return result;
}

/// Inflates until the stream ends, the source ends, or there is no room left.
/// With a dump, all bytes go there.
[[nodiscard]] int inflate_all(z_stream &stream, const io_inflate_source &source,
                              std::int64_t out_left, dump *forgotten)
{
    int result = Z_OK;
    while (result == Z_OK) {
        if (stream.avail_in == 0) {
            const void *bytes = nullptr;
            stream.avail_in = static_cast<uInt>(source(bytes));
            stream.next_in = bytes_of(bytes);
        }
        if (stream.avail_out == 0) {
            if (forgotten != nullptr) {
                stream.next_out = forgotten->memory.data();
            }
            stream.avail_out = next_part(out_left, forgotten != nullptr ? dump::bytes : zlib_most);
            out_left -= stream.avail_out;
        }
        // If there is no input and no room left, the stream must end now;
        // otherwise it is an error.
        result = inflate(&stream, stream.avail_in == 0 ? Z_FINISH : Z_NO_FLUSH);
    }
    return result;
}

[[nodiscard]] int inflate_failed(const io_reporter &report, int result)
{
    switch (result) {
    case Z_BUF_ERROR:
        return report.error(IO_COMPRESSION, "io_gunzip: Buffer error");
    case Z_MEM_ERROR:
        return report.error(IO_COMPRESSION, "io_gunzip: Out of memory error");
    case Z_DATA_ERROR:
        return report.error(IO_COMPRESSION, "io_gunzip: Data error");
    case Z_OK:
        return report.error(IO_COMPRESSION, "io_gunzip: Terminated before end");
    default:
        return report.error(IO_COMPRESSION, "io_gunzip: error %d decompressing data", result);
    }
}

} // namespace

std::size_t io_gzip_word_bytes(char letter)
{
    for (const element_traits &element : element_table) {
        if (element.gzip_letter == letter) {
            return element.word_bytes;
        }
    }
    return 0;
}

std::int64_t io_gzip(const io_reporter &report, char letter, int level, const void *in,
                     std::int64_t count, io_deflate_buffer buffer, const io_deflate_sink &take)
{
    auto word = static_cast<std::int64_t>(io_gzip_word_bytes(letter));
    if (word == 0) {
        return io_gzip_nothing;
    }
    z_stream stream = {};
    int started = deflateInit(&stream, level >= 1 && level <= 9 ? level : default_level);
    if (started != Z_OK) {
        std::fprintf(stderr, "%s error: %d\n", "deflateInit", started);
        return io_gzip_nothing;
    }
    std::int64_t in_bytes = count * word;
    stream.next_in = bytes_of(in);
    bool refused = false;
    int result = deflate_all(stream, in_bytes, buffer, take, refused);
    auto total = static_cast<std::int64_t>(stream.total_out);
    Bytef *end = stream.next_out;
    deflateEnd(&stream);
    if (refused) {
        return io_gzip_refused;
    }
    if (result != Z_STREAM_END) {
        return io_gzip_larger;
    }
    std::int64_t words = (total + word - 1) / word;
    if (words > count) {
        return io_gzip_rounded;
    }
    if (words * word < total) {
        report.trace("gzip: hack triggered: incrementing cmpwords (was %d): old condition was"
                     " total_out (%d) != insize (%d), inwords=%d, outwirds=%d, bytes_word=%d",
                     static_cast<int>(words), static_cast<int>(total), static_cast<int>(in_bytes),
                     static_cast<int>(count), static_cast<int>(words), static_cast<int>(word));
        words++;
    }
    auto padding = static_cast<std::size_t>(words * word - total);
    std::memset(end, 0, padding);
    auto last = static_cast<std::size_t>(end - bytes_of(buffer.memory)) + padding;
    return take(buffer.memory, last, true) ? words : std::int64_t{io_gzip_refused};
}

int io_inflate(const io_reporter &report, const io_inflate_source &source, void *out,
               std::int64_t out_bytes, std::int64_t &produced)
{
    z_stream stream = {};
    if (int result = inflateInit(&stream)) {
        return report.error(IO_COMPRESSION, "io_gunzip: inflateInit failed: %d", result);
    }
    std::unique_ptr<dump> forgotten(out == nullptr ? new (std::nothrow) dump : nullptr);
    stream.next_out = bytes_of(out);
    bool possible = out != nullptr || forgotten != nullptr;
    int result = possible ? inflate_all(stream, source, out_bytes, forgotten.get()) : Z_MEM_ERROR;
    produced = static_cast<std::int64_t>(stream.total_out);
    int ended = inflateEnd(&stream);
    if (result != Z_STREAM_END) {
        return inflate_failed(report, result);
    }
    if (ended != Z_OK) {
        return report.error(IO_COMPRESSION, "io_gunzip: inflateEnd failed: %d", ended);
    }
    return IO_OK;
}

int io_gunzip_exactly(const io_reporter &report, std::int64_t produced, std::int64_t expected)
{
    if (produced == expected) {
        return IO_OK;
    }
    return report.error(IO_COMPRESSION,
                        "io_gunzip: decompressed %s data: got %d bytes, expected %d",
                        produced > expected ? "too much" : "too little", static_cast<int>(produced),
                        static_cast<int>(expected));
}

int io_gunzip(const io_reporter &report, const void *in, std::int64_t in_bytes, void *out,
              std::int64_t out_bytes)
{
    auto source = [&](const void *&bytes) {
        bytes = in;
        uInt part = next_part(in_bytes);
        in = static_cast<const char *>(in) + part;
        in_bytes -= part;
        return std::size_t{part};
    };
    std::int64_t produced = 0;
    if (int code = io_inflate(report, source, out, out_bytes, produced)) {
        return code;
    }
    return io_gunzip_exactly(report, produced, out_bytes);
}
