// The real environment: files, locks and waiting with system calls.
#include "io/Src/Main/io_env.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class posix_file : public io_file
{
public:
    posix_file() = default;
    posix_file(const posix_file &) = delete;
    posix_file &operator=(const posix_file &) = delete;
    ~posix_file() override { release(); }

    bool open(const char *name, int flags)
    {
        descriptor_ = ::open(name, flags, 0666);
        return descriptor_ >= 0;
    }

    /// False with errno for what is not a regular file.
    bool is_regular() const
    {
        struct stat status = {};
        if (::fstat(descriptor_, &status) != 0) {
            return false;
        }
        if (!S_ISREG(status.st_mode)) {
            errno = S_ISDIR(status.st_mode) ? EISDIR : ESPIPE;
            return false;
        }
        return true;
    }

    std::int64_t read_at(std::int64_t position, void *to, std::size_t bytes) override
    {
        auto *next = static_cast<char *>(to);
        std::size_t left = bytes;
        while (left > 0) {
            ssize_t got = ::pread(descriptor_, next, left, position);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                return -1;
            }
            if (got == 0) {
                break;
            }
            next += got;
            position += got;
            left -= static_cast<std::size_t>(got);
        }
        return static_cast<std::int64_t>(bytes - left);
    }

    bool write_at(std::int64_t position, const void *from, std::size_t bytes) override
    {
        const auto *next = static_cast<const char *>(from);
        while (bytes > 0) {
            ssize_t put = ::pwrite(descriptor_, next, bytes, position);
            if (put < 0 && errno == EINTR) {
                continue;
            }
            if (put <= 0) {
                return false;
            }
            next += put;
            position += put;
            bytes -= static_cast<std::size_t>(put);
        }
        return true;
    }

    std::int64_t size() override
    {
        struct stat status = {};
        return ::fstat(descriptor_, &status) == 0 ? status.st_size : -1;
    }

    bool truncate(std::int64_t size) override
    {
        int result = 0;
        do {
            result = ::ftruncate(descriptor_, size);
        } while (result != 0 && errno == EINTR);
        return result == 0;
    }

    bool close() override { return release(); }

private:
    bool release()
    {
        int descriptor = descriptor_;
        descriptor_ = -1;
        return descriptor < 0 || ::close(descriptor) == 0;
    }

    int descriptor_ = -1;
};

[[nodiscard]] int open_flags(io_open how)
{
    switch (how) {
    case io_open::read:
        return O_RDONLY;
    case io_open::update:
        return O_RDWR;
    case io_open::create_new:
        return O_RDWR | O_CREAT | O_EXCL;
    case io_open::truncate:
        return O_RDWR | O_CREAT | O_TRUNC;
    }
    return O_RDONLY;
}

class posix_env : public io_env
{
public:
    std::unique_ptr<io_file> open(const char *name, io_open how) override
    {
        // The object is made first, because a failure must not leave a new file.
        auto file = std::make_unique<posix_file>();
        // Not blocking: the open of a pipe without a writer would never return.
        int flags = open_flags(how) | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
        if (!file->open(name, flags) || !file->is_regular()) {
            return nullptr;
        }
        return file;
    }

    bool remove(const char *name) override { return ::unlink(name) == 0; }

    void sleep(int milliseconds) override
    {
        timespec left = {milliseconds / 1000, (milliseconds % 1000) * 1000000L};
        while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
        }
    }

    const char *variable(const char *name) override { return std::getenv(name); }

    void put_trace(std::string_view line) override
    {
        std::fwrite(line.data(), 1, line.size(), stdout);
        std::fflush(stdout);
    }

    void put_error(std::string_view line) override
    {
        std::fwrite(line.data(), 1, line.size(), stderr);
    }

    void break_into_debugger() override { std::raise(SIGTRAP); }
};

} // namespace

io_env &io_real_env()
{
    static posix_env env;
    return env;
}
