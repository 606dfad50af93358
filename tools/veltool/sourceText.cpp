#include "tools/veltool/sourceText.h"

#include "tools/veltool/failure.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace veltool {

namespace {

constexpr std::size_t blockSize = 1U << 20U;

/// A descriptor that closes itself, unless it is standard input.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ > STDIN_FILENO)
            close(number_);
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
    const bool standard = file == standardInput;
    const std::string name = standard ? "standard input" : file;
    const Descriptor in(standard ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (in.number() < 0)
        throw systemFailure(name, errno);

    std::string bytes;
    for (std::size_t end = 0;;) {
        bytes.resize(end + blockSize);
        const ssize_t count = read(in.number(), bytes.data() + end, blockSize);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw systemFailure(name, errno);
        end += static_cast<std::size_t>(count);
        if (count == 0) {
            bytes.resize(end);
            return bytes;
        }
    }
}

} // namespace veltool
