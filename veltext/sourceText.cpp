// Finds the lines of a text, their line ends and indents.
#include "veltext/sourceText.h"

#include "velapilt/src/velSpace.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

namespace veltext {

SourceText::SourceText(std::string bytes)
    : bytes_(std::move(bytes)), firstLine_(byteOrderMarkLength(bytes_))
{
    for (std::size_t start = firstLine_; start < bytes_.size();) {
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
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view SourceText::parsedLine(std::size_t line) const
{
    const std::string_view text = this->line(line);
    return text.substr(0, text.find('\0'));
}

std::string_view SourceText::lineEnd(std::size_t line) const
{
    return line < lineCount() && this->line(line).ends_with('\r') ? "\r\n" : "\n";
}

velArray SourceText::parsedLines() const
{
    velArray lines(velArrayKind::Strings);
    for (std::size_t i = 0; i < lineCount(); ++i) {
        if (!lines.addString(parsedLine(i))) {
            throw std::bad_alloc();
        }
    }
    return lines;
}

std::string_view leadingBlanks(std::string_view line)
{
    const auto end = std::find_if_not(line.begin(), line.end(), velIsSpace);
    return line.substr(0, static_cast<std::size_t>(end - line.begin()));
}

bool isContainer(std::string_view bytes)
{
    constexpr std::string_view start = "*INFO";
    static_assert(start.size() == containerStartLength);
    return bytes.starts_with(start);
}

std::size_t byteOrderMarkLength(std::string_view bytes)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return bytes.starts_with(mark) ? mark.size() : 0;
}

std::optional<SourceText> readSource(const std::string &file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return std::nullopt;
    }
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    if (!in.is_open() || in.bad()) {
        return std::nullopt;
    }
    return SourceText(std::move(bytes));
}

} // namespace veltext
