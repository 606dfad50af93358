// The buffer between the library and a file. It reads ahead, and gathers writes.
#include "io/Src/Main/io_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

constexpr std::size_t buffer_bytes = 256 * 1024;
constexpr std::size_t page_bytes = 4096;
constexpr std::size_t straight_bytes = 64 * 1024; // reads from this size on do not use the buffer
constexpr std::size_t first_ahead = 4096; // enough for a small dataset after a look-up in the index

} // namespace

bool io_stream::seek(std::int64_t position)
{
    if (position < 0) {
        errno = EINVAL;
        return false;
    }
    if (position == position_) {
        return true;
    }
    if (dirty_ && !flush()) {
        return false;
    }
    position_ = position;
    return true;
}

void io_stream::forget()
{
    start_ = position_;
    used_ = 0;
    ahead_ = first_ahead;
}

std::size_t io_stream::buffered() const
{
    if (dirty_ || position_ < start_ || position_ >= start_ + static_cast<std::int64_t>(used_)) {
        return 0;
    }
    return used_ - static_cast<std::size_t>(position_ - start_);
}

bool io_stream::fill()
{
    // A read that continues where the buffer ended, or a little after it, is
    // probably one of many reads in order.
    std::int64_t skipped = position_ - (start_ + static_cast<std::int64_t>(used_));
    bool in_order = used_ > 0 && skipped >= 0 && skipped < static_cast<std::int64_t>(ahead_);
    ahead_ = in_order ? std::min(ahead_ * 2, buffer_bytes) : first_ahead;
    if (buffer_ == nullptr) {
        buffer_.reset(new char[buffer_bytes]);
    }
    start_ = position_;
    used_ = 0;
    std::int64_t got = file_->read_at(position_, buffer_.get(), ahead_);
    if (got < 0) {
        failed_ = true;
        return false;
    }
    used_ = static_cast<std::size_t>(got);
    return used_ > 0;
}

std::size_t io_stream::take(char *to, std::size_t bytes)
{
    std::size_t part = std::min(bytes, buffered());
    if (part > 0) {
        std::memcpy(to, next(), part);
        position_ += static_cast<std::int64_t>(part);
    }
    return part;
}

std::size_t io_stream::read_straight(char *to, std::size_t bytes)
{
    std::int64_t got = file_->read_at(position_, to, bytes);
    if (got < 0) {
        failed_ = true;
        return 0;
    }
    position_ += got;
    return static_cast<std::size_t>(got);
}

std::size_t io_stream::read(void *to, std::size_t bytes)
{
    failed_ = dirty_ && !flush();
    if (failed_) {
        return 0;
    }
    auto *target = static_cast<char *>(to);
    std::size_t done = take(target, bytes);
    if (bytes - done >= straight_bytes) {
        return done + read_straight(target + done, bytes - done);
    }
    while (done < bytes && fill()) {
        done += take(target + done, bytes - done);
    }
    return done;
}

io_stream::line_end io_stream::read_line(std::size_t most, std::string &line)
{
    line.clear();
    failed_ = dirty_ && !flush();
    while (!failed_) {
        std::size_t have = buffered();
        if (have == 0) {
            if (!fill()) {
                break;
            }
            have = buffered();
        }
        std::size_t room = most - line.size();
        std::size_t part = std::min(have, room);
        const auto *found =
            static_cast<const char *>(std::memchr(next(), '\n', std::min(have, room + 1)));
        if (found != nullptr) {
            part = static_cast<std::size_t>(found - next());
        }
        line.append(next(), part);
        position_ += static_cast<std::int64_t>(part) + (found != nullptr ? 1 : 0);
        if (found != nullptr) {
            return at_lf;
        }
        if (line.size() == most && have > part) {
            return at_limit;
        }
    }
    return at_end_of_file;
}

bool io_stream::write(const void *from, std::size_t bytes)
{
    return bytes < buffer_bytes ? gather(from, bytes) : write_straight(from, bytes);
}

bool io_stream::gather(const void *from, std::size_t bytes)
{
    if (bytes == 0) {
        return true; // an empty array may have no address, but memcpy needs one
    }
    if (!dirty_) {
        forget();
    }
    if (used_ + bytes > buffer_bytes && !flush()) {
        return false;
    }
    if (buffer_ == nullptr) {
        buffer_.reset(new char[buffer_bytes]);
    }
    std::memcpy(buffer_.get() + used_, from, bytes);
    used_ += bytes;
    position_ += static_cast<std::int64_t>(bytes);
    dirty_ = true;
    return true;
}

/// Fills the current page of the file with the gathered bytes, and writes the
/// rest from the caller's memory. Writing whole pages takes a tenth less time.
bool io_stream::write_straight(const void *from, std::size_t bytes)
{
    auto in_page = static_cast<std::size_t>(position_) % page_bytes;
    std::size_t head = in_page == 0 ? 0 : page_bytes - in_page;
    if (!gather(from, head) || !flush()) {
        return false;
    }
    if (!file_->write_at(position_, static_cast<const char *>(from) + head, bytes - head)) {
        return false;
    }
    position_ += static_cast<std::int64_t>(bytes - head);
    forget();
    return true;
}

bool io_stream::flush()
{
    if (!dirty_) {
        return true;
    }
    dirty_ = false;
    bool good = file_->write_at(start_, buffer_.get(), used_);
    forget();
    return good;
}

void io_stream::discard()
{
    dirty_ = false;
    forget();
}

std::int64_t io_stream::size()
{
    return flush() ? file_->size() : -1;
}

bool io_stream::truncate(std::int64_t size)
{
    if (!flush()) {
        return false;
    }
    forget();
    return file_->truncate(size);
}

bool io_stream::close()
{
    bool flushed = flush();
    int number = errno;
    std::unique_ptr<io_file> file = std::move(file_);
    bool closed = file->close();
    *this = io_stream();
    if (!flushed) {
        errno = number;
    }
    return flushed && closed;
}
