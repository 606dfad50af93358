// Reads files of any kind in blocks.
#include "veltext/readFile.h"

#include "veltext/error.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace veltext {

namespace {

constexpr std::size_t blockSize = 1U << 20U;

/// A descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

} // namespace

std::string readBytes(const std::string &file)
{
    const Descriptor in(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (in.number() < 0) {
        throw systemError(file, errno);
    }
    return readBytes(in.number(), file);
}

std::string readBytes(int descriptor, const std::string &name)
{
    std::string bytes;
    for (std::size_t end = 0;;) {
        bytes.resize(end + blockSize);
        const ssize_t count = read(descriptor, bytes.data() + end, blockSize);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throw systemError(name, errno);
        }
        end += static_cast<std::size_t>(count);
        if (count == 0) {
            bytes.resize(end);
            return bytes;
        }
    }
}

} // namespace veltext
