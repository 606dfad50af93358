// Compresses and expands versions block by block.
#include "veltext/versionObject_p.h"

#include "veltext/error.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include <unistd.h>
#include <zlib.h>

namespace veltext {

namespace {

constexpr std::size_t blockSize = 1U << 18U;

/// A save waits for the compression. The usual level saves a fifth of the size,
/// but takes more than twice as long.
constexpr int level = Z_BEST_SPEED;

constexpr int gzipWindow = MAX_WBITS + 16; ///< this is how zlib selects the gzip format
constexpr int usualMemory = 8;
constexpr int unknownSystem = 255;

/// The header that is written: ten bytes, and the comment with its final zero.
constexpr std::size_t fixedHeader = 10;
constexpr std::size_t flagsAt = 3;
constexpr char commentFlag = 0x10;

/// The longest part of a program's name that is read again.
constexpr std::size_t longestProgram = 256;

Bytef *bytesOf(std::string &text)
{
    return reinterpret_cast<Bytef *>(text.data());
}

/// A zlib stream that the destructor ends.
class Deflater
{
public:
    Deflater(const ObjectHeader &header, std::uint64_t limit)
        : limit_(limit), comment_(header.program), block_(blockSize, '\0')
    {
        if (deflateInit2(&stream_, level, Z_DEFLATED, gzipWindow, usualMemory,
                         Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
        header_.time = static_cast<uLong>(header.time);
        header_.os = unknownSystem;
        header_.comment = bytesOf(comment_);
        deflateSetHeader(&stream_, &header_);
    }
    ~Deflater() { deflateEnd(&stream_); }
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    /// False once the result is longer than the limit.
    bool add(std::string &input, std::size_t size, bool isLast)
    {
        stream_.next_in = bytesOf(input);
        stream_.avail_in = static_cast<uInt>(size);
        do {
            stream_.next_out = bytesOf(block_);
            stream_.avail_out = static_cast<uInt>(block_.size());
            deflate(&stream_, isLast ? Z_FINISH : Z_NO_FLUSH);
            result_.append(block_, 0, block_.size() - stream_.avail_out);
        } while (stream_.avail_out == 0);
        return result_.size() <= limit_;
    }

    std::string take() { return std::move(result_); }

private:
    std::uint64_t limit_;
    z_stream stream_ = {};
    gz_header header_ = {};
    std::string comment_;
    std::string block_;
    std::string result_;
};

/// Like Deflater, but expands.
class Inflater
{
public:
    explicit Inflater(std::string_view object) : object_(object)
    {
        if (inflateInit2(&stream_, gzipWindow) != Z_OK) {
            throw std::bad_alloc();
        }
        // zlib does not change these bytes.
        stream_.next_in = const_cast<Bytef *>(reinterpret_cast<const Bytef *>(object.data()));
        header_.comment = bytesOf(comment_);
        header_.comm_max = static_cast<uInt>(comment_.size() - 1);
        inflateGetHeader(&stream_, &header_);
    }
    ~Inflater() { inflateEnd(&stream_); }
    Inflater(const Inflater &) = delete;
    Inflater &operator=(const Inflater &) = delete;

    /// Whether the object is complete, and nothing comes after it.
    bool run(const ContentSink &sink)
    {
        std::string block(blockSize, '\0');
        std::size_t rest = object_.size();
        for (int state = Z_OK; state == Z_OK;) {
            const std::size_t given = std::min(rest, blockSize);
            stream_.avail_in = static_cast<uInt>(given);
            stream_.next_out = bytesOf(block);
            stream_.avail_out = static_cast<uInt>(block.size());
            state = inflate(&stream_, Z_NO_FLUSH);
            rest -= given - stream_.avail_in;
            const std::size_t size = block.size() - stream_.avail_out;
            if (size > 0 && !sink(std::string_view(block).substr(0, size))) {
                return false;
            }
            if (state == Z_STREAM_END) {
                return rest == 0;
            }
        }
        return false;
    }

    [[nodiscard]] ObjectHeader header() const
    {
        return {static_cast<std::int64_t>(header_.time), comment_.c_str()};
    }

private:
    std::string_view object_;
    z_stream stream_ = {};
    gz_header header_ = {};
    std::string comment_ = std::string(longestProgram, '\0');
};

/// Everything after the header, if it is one of our headers.
std::string_view withoutHeader(std::string_view object)
{
    if (object.size() <= fixedHeader || object[flagsAt] != commentFlag) {
        return {};
    }
    const std::size_t end = object.find('\0', fixedHeader);
    return end == std::string_view::npos ? std::string_view() : object.substr(end + 1);
}

} // namespace

VersionObject compressVersion(int descriptor, const std::string &name, const ObjectHeader &header,
                              std::uint64_t limit)
{
    VersionObject object;
    Deflater deflater(header, limit);
    std::string block(blockSize, '\0');
    for (;;) {
        const ssize_t count = ::read(descriptor, block.data(), block.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throw systemError(name, errno);
        }
        const auto size = static_cast<std::size_t>(count);
        object.size += size;
        object.content = static_cast<std::uint32_t>(crc32_z(object.content, bytesOf(block), size));
        if (!deflater.add(block, size, size == 0)) {
            throw Error(name, 0, "takes more than " + std::to_string(limit) + " bytes compressed");
        }
        if (size == 0) {
            break;
        }
    }
    object.bytes = deflater.take();
    return object;
}

bool haveSameContent(std::string_view one, std::string_view other)
{
    const std::string_view content = withoutHeader(one);
    return !content.empty() && content == withoutHeader(other);
}

bool expandVersion(std::string_view object, ObjectHeader *header, const ContentSink &sink)
{
    Inflater inflater(object);
    if (!inflater.run(sink)) {
        return false;
    }
    if (header != nullptr) {
        *header = inflater.header();
    }
    return true;
}

} // namespace veltext
