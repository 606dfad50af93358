// Reads a file together with what the system says about it.
#include "veleditor/src/FileVersion.h"

#include "veltext/error.h"
#include "veltext/readFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velEditor {

namespace {

constexpr std::int64_t nanosecondsOfASecond = 1'000'000'000;

/// The coarsest times of a file system are in steps of two seconds.
constexpr std::int64_t coarsestTime = 2 * nanosecondsOfASecond;

std::int64_t nanoseconds(const timespec &time)
{
    return time.tv_sec * nanosecondsOfASecond + time.tv_nsec;
}

FileStatus statusFrom(const struct stat &found)
{
    if (!S_ISREG(found.st_mode)) {
        return {FileStatus::Kind::Missing, {}};
    }
    return {FileStatus::Kind::Regular,
            {found.st_dev, found.st_ino, found.st_nlink, static_cast<std::uint64_t>(found.st_size),
             nanoseconds(found.st_mtim), nanoseconds(found.st_ctim)}};
}

std::int64_t now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return nanoseconds(time);
}

/// Whether a change from now on gives another stamp than this one.
bool isLasting(const FileStamp &stamp)
{
    return now() - std::max(stamp.written, stamp.touched) > coarsestTime;
}

struct Content
{
    FileStamp stamp;
    bool isLasting;
    std::string bytes;
};

/// Nothing if it is not a regular file, or cannot be read. Does not wait for a pipe.
std::optional<Content> contentOf(const std::string &file)
{
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return std::nullopt;
    }
    std::optional<Content> content;
    struct stat found = {};
    const FileStatus status = ::fstat(descriptor, &found) == 0
                                  ? statusFrom(found)
                                  : FileStatus{FileStatus::Kind::Unknown, {}};
    if (status.kind == FileStatus::Kind::Regular) {
        const bool lasts = isLasting(status.stamp);
        try {
            content = Content{status.stamp, lasts, veltext::readBytes(descriptor, file)};
        } catch (const veltext::Error &) {
            content.reset();
        }
    }
    ::close(descriptor);
    return content;
}

} // namespace

FileStatus statusOf(const std::string &file)
{
    struct stat found = {};
    if (::stat(file.c_str(), &found) == 0) {
        return statusFrom(found);
    }
    const bool isMissing = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
    return {isMissing ? FileStatus::Kind::Missing : FileStatus::Kind::Unknown, {}};
}

std::shared_ptr<FileVersion> FileVersion::read(const std::string &file)
{
    std::optional<Content> content = contentOf(file);
    if (!content) {
        return nullptr;
    }
    auto version = std::make_shared<FileVersion>(std::move(content->bytes));
    version->stamp_ = content->stamp;
    version->last_ = Look{content->stamp, content->isLasting, {Match::Same}};
    return version;
}

FileVersion::Comparison FileVersion::compare(const std::string &file)
{
    const FileStatus status = statusOf(file);
    if (status.kind != FileStatus::Kind::Regular) {
        return {status.kind == FileStatus::Kind::Missing ? Match::Missing : Match::Unknown};
    }
    if (last_ && last_->isLasting && last_->stamp == status.stamp) {
        return last_->comparison;
    }
    const std::optional<Content> content = contentOf(file);
    if (!content) {
        return {Match::Unknown};
    }
    const bool isSame = content->bytes == bytes_;
    const Comparison comparison =
        isSame ? Comparison{Match::Same}
               : Comparison{Match::Other, std::hash<std::string>()(content->bytes)};
    last_ = Look{content->stamp, content->isLasting, comparison};
    if (isSame) {
        stamp_ = content->stamp;
    }
    return comparison;
}

} // namespace velEditor
