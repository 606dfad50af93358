// zlib over arrays of words: whole elements in, whole elements out.
#pragma once

#include "io/Src/Main/data_type.h"

#include <cstdint>
#include <functional>

/// Bytes of a word of the types with this letter (element_traits): 4 for i and r, 8
/// for d, 1 for c, 0 for any other letter.
std::size_t io_gzip_word_bytes(char letter);

/// Receives the next bytes of a compressed array; false if it cannot. `last` means that no
/// more bytes follow.
using io_deflate_sink = std::function<bool(const void *bytes, std::size_t count, bool last)>;

/// The buffer for a compressed array: `bytes` of the caller's memory, a multiple of the word.
struct io_deflate_buffer
{
    void *memory;
    std::int64_t bytes;
};

/// What io_gzip() returns besides the number of words.
enum io_gzip_result : std::int64_t {
    io_gzip_nothing = 0,  ///< an unknown letter, or a failure to start zlib
    io_gzip_larger = -1,  ///< the result would be larger than the input
    io_gzip_rounded = -2, ///< the result is larger only because it is rounded up to words
    io_gzip_refused = -3, ///< the sink has failed
};

/// Compresses `count` words into one stream, filled with zero bytes to whole
/// words, and gives it to `take` each time that the buffer is full: the bytes are
/// still in the processor's cache when they are written. A level outside 1 to 9
/// counts as 5. Returns the number of words, or an io_gzip_result; even then the sink may
/// have received a part.
std::int64_t io_gzip(const io_reporter &report, char letter, int level, const void *in,
                     std::int64_t count, io_deflate_buffer buffer, const io_deflate_sink &take);

/// Gives the next bytes of a stream: sets where they are and returns how many,
/// 0 if there are no more.
using io_inflate_source = std::function<std::size_t(const void *&bytes)>;

/// Inflates one stream into `out`, or drops the bytes if it is null. `produced` gets the
/// number of bytes of the stream; io_gunzip_exactly() checks whether it is the expected one.
/// 23 with a message for a stream that is wrong, ends early, or has more bytes.
[[nodiscard]] int io_inflate(const io_reporter &report, const io_inflate_source &source, void *out,
                             std::int64_t out_bytes, std::int64_t &produced);

/// 23 with a message unless `produced` bytes are `expected`.
[[nodiscard]] int io_gunzip_exactly(const io_reporter &report, std::int64_t produced,
                                    std::int64_t expected);

/// Both in one: exactly `out_bytes` bytes.
[[nodiscard]] int io_gunzip(const io_reporter &report, const void *in, std::int64_t in_bytes,
                            void *out, std::int64_t out_bytes);
