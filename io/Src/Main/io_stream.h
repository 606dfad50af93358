// A position and a buffer over an io_file.
//
// Small reads and writes use the buffer; large ones directly use the caller's memory. The
// buffer contains either bytes that were read ahead or bytes that are not written yet, never
// both. So a write may report the failure of an earlier one; only flush() ensures that
// everything is in the file.
#pragma once

#include "io/Src/Main/io_env.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// An open file, or none: a stream without a file is false, and closed.
class io_stream
{
public:
    io_stream() = default;
    /// Takes ownership of the file. The position is 0.
    explicit io_stream(std::unique_ptr<io_file> file) : file_(std::move(file)) {}

    explicit operator bool() const { return file_ != nullptr; }

    /// Where the next byte is read or written.
    std::int64_t tell() const { return position_; }

    /// Any position that is not negative; false (EINVAL) otherwise, and where
    /// gathered bytes cannot be written.
    [[nodiscard]] bool seek(std::int64_t position);

    /// The bytes got: fewer than asked for at the end of the file, or on
    /// failure, which failed() tells apart.
    std::size_t read(void *to, std::size_t bytes);

    /// Reads up to and without the next LF, at most `most` characters. The
    /// result says how it ended; the position is after what was taken (and
    /// after the LF).
    enum line_end { at_lf, at_limit, at_end_of_file };
    line_end read_line(std::size_t most, std::string &line);

    /// Writes at the position and goes on after it; false with errno on failure.
    [[nodiscard]] bool write(const void *from, std::size_t bytes);
    /// Gives what is gathered to the file; false with errno on failure.
    [[nodiscard]] bool flush();

    /// Forgets what is gathered and not yet written.
    void discard();

    /// Whether the last read failed rather than met the end.
    bool failed() const { return failed_; }

    /// −1 on failure.
    std::int64_t size();
    /// As io_file::truncate(), after what is gathered has been written.
    [[nodiscard]] bool truncate(std::int64_t size);

    /// Writes what is gathered and closes; the stream is empty afterwards.
    [[nodiscard]] bool close();

private:
    bool fill();
    std::size_t take(char *to, std::size_t bytes);
    std::size_t read_straight(char *to, std::size_t bytes);
    bool gather(const void *from, std::size_t bytes);
    bool write_straight(const void *from, std::size_t bytes);
    std::size_t buffered() const;
    const char *next() const { return buffer_.get() + (position_ - start_); }
    void forget();

    std::unique_ptr<io_file> file_;
    std::unique_ptr<char[]> buffer_; ///< owned
    std::int64_t start_ = 0;         ///< file position of the buffer's first byte
    std::size_t used_ = 0;           ///< bytes in the buffer
    std::size_t ahead_ = 0;          ///< bytes to read at the next fill
    std::int64_t position_ = 0;
    bool dirty_ = false; ///< the buffer holds bytes to be written
    bool failed_ = false;
};
