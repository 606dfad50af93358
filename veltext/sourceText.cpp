#include "tools/veltool/sourceText.h"

#include "tools/veltool/failure.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
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

SourceText::SourceText(std::string bytes) : bytes_(std::move(bytes))
{
    for (std::size_t start = 0; start < bytes_.size();) {
        starts_.push_back(start);
        const std::size_t feed = bytes_.find('\n', start);
        start = feed == std::string::npos ? bytes_.size() : feed + 1;
    }
}

std::size_t SourceText::lineStart(std::size_t line) const
{
    return line < starts_.size() ? starts_[line] : bytes_.size();
}

std::string_view SourceText::line(std::size_t line) const
{
    const std::size_t start = lineStart(line);
    std::string_view text(bytes_.data() + start, lineStart(line + 1) - start);
    if (!text.empty() && text.back() == '\n')
        text.remove_suffix(1);
    return text;
}

std::string_view SourceText::parsedLine(std::size_t line) const
{
    const std::string_view text = this->line(line);
    return text.substr(0, text.find('\0'));
}

velArray SourceText::parsedLines() const
{
    velArray lines(velArrayKind::Strings);
    for (std::size_t i = 0; i < lineCount(); ++i) {
        if (!lines.addString(parsedLine(i)))
            throw std::bad_alloc();
    }
    return lines;
}

} // namespace veltool
