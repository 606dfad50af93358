// Writes the lines of an index with their checksums, and reads the lines whose checksums are
// correct.
#include "veltext/historyIndex_p.h"

#include "common/takeLine.h"
#include "veltext/error.h"

#include <charconv>
#include <cstdio>
#include <optional>

#include <zlib.h>

namespace veltext {

namespace {

constexpr std::string_view formatWord = "veleditor-history";
constexpr std::string_view fileWord = "file";
constexpr std::string_view versionWord = "version";
constexpr std::string_view endWord = "end";
constexpr std::uint64_t formatNumber = 1;

constexpr std::size_t sumDigits = 8;
constexpr int hexadecimal = 16;

std::string hexOf(std::uint32_t number)
{
    char digits[sumDigits + 1];
    std::snprintf(digits, sizeof digits, "%08x", number);
    return digits;
}

std::uint32_t sumOf(std::string_view bytes)
{
    return static_cast<std::uint32_t>(crc32_z(
        crc32_z(0, nullptr, 0), reinterpret_cast<const Bytef *>(bytes.data()), bytes.size()));
}

/// The line with its checksum and its end.
std::string summed(const std::string &line)
{
    return line + ' ' + hexOf(sumOf(line)) + '\n';
}

bool needsEscape(unsigned char c)
{
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char remove = 0x7f;
    return c < firstPrintable || c == remove || c == '%';
}

/// The text with %XX for the characters that may not be in a line.
std::string escaped(const std::string &text)
{
    std::string result;
    for (const char c : text) {
        char code[4] = {c, '\0'};
        if (needsEscape(static_cast<unsigned char>(c))) {
            std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
        }
        result += code;
    }
    return result;
}

std::string unescaped(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        unsigned char c = static_cast<unsigned char>(text.front());
        std::size_t length = 1;
        if (c == '%' && text.size() > 2 &&
            std::from_chars(text.data() + 1, text.data() + 3, c, hexadecimal).ptr ==
                text.data() + 3) {
            length = 3;
        }
        result += static_cast<char>(c);
        text.remove_prefix(length);
    }
    return result;
}

/// Reads the words of a line, one by one.
class LineWords
{
public:
    explicit LineWords(std::string_view line) : rest_(line) {}

    std::string_view word()
    {
        const std::size_t end = rest_.find(' ');
        const std::string_view word = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return word;
    }

    template <typename Number>
    Number number(int base = 10)
    {
        const std::string_view digits = word();
        Number value = 0;
        const char *end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
        areNumbers_ = areNumbers_ && error == std::errc() && stop == end;
        return value;
    }

    [[nodiscard]] std::string_view rest() const { return rest_; }
    [[nodiscard]] bool areNumbers() const { return areNumbers_; }

private:
    std::string_view rest_;
    bool areNumbers_ = true;
};

/// The line without its checksum; nothing if the checksum is wrong.
std::optional<std::string_view> checkedLine(std::string_view line)
{
    if (line.size() <= sumDigits || line[line.size() - sumDigits - 1] != ' ') {
        return {};
    }
    const std::string_view text = line.substr(0, line.size() - sumDigits - 1);
    if (line.substr(line.size() - sumDigits) != hexOf(sumOf(text))) {
        return {};
    }
    return text;
}

/// Collects the lines of an index.
class IndexReader
{
public:
    explicit IndexReader(const std::string &name) : name_(name) {}

    void take(std::string_view line)
    {
        const std::optional<std::string_view> text = checkedLine(line);
        if (!text || !takeText(*text)) {
            ++index_.badLines;
        }
    }

    HistoryIndex finish()
    {
        index_.isWhole = hasFormat_ && hasEnd_ && index_.badLines == 0;
        return std::move(index_);
    }

private:
    bool takeText(std::string_view text)
    {
        LineWords words(text);
        const std::string_view kind = words.word();
        if (kind == formatWord) {
            return takeFormat(words);
        }
        if (kind == fileWord) {
            return true; // only people read this line
        }
        if (kind == versionWord) {
            return takeVersion(words);
        }
        if (kind == endWord) {
            return takeEnd(words);
        }
        return false;
    }

    bool takeFormat(LineWords words)
    {
        if (words.number<std::uint64_t>() != formatNumber) {
            throw Error(name_, 0, "was written by a later version of the programs");
        }
        hasFormat_ = words.areNumbers();
        return hasFormat_;
    }

    bool takeVersion(LineWords words)
    {
        HistoryEntry entry;
        entry.time = words.number<std::int64_t>();
        entry.size = words.number<std::uint64_t>();
        entry.stored = words.number<std::uint64_t>();
        entry.object = words.number<std::uint64_t>();
        entry.content = words.number<std::uint32_t>(hexadecimal);
        entry.program = unescaped(words.rest());
        if (words.areNumbers()) {
            index_.entries.push_back(std::move(entry));
        }
        return words.areNumbers();
    }

    bool takeEnd(LineWords words)
    {
        hasEnd_ = words.number<std::size_t>() == index_.entries.size() && words.areNumbers();
        return hasEnd_;
    }

    const std::string &name_;
    HistoryIndex index_;
    bool hasFormat_ = false;
    bool hasEnd_ = false;
};

} // namespace

HistoryIndex parseIndex(std::string_view text, const std::string &name)
{
    IndexReader reader(name);
    while (!text.empty()) {
        reader.take(velEditor::takeLine(&text));
    }
    return reader.finish();
}

std::string indexText(const std::string &file, const std::vector<HistoryEntry> &entries)
{
    std::string text = summed(std::string(formatWord) + ' ' + std::to_string(formatNumber));
    text += summed(std::string(fileWord) + ' ' + escaped(file));
    for (const HistoryEntry &entry : entries) {
        text += summed(std::string(versionWord) + ' ' + std::to_string(entry.time) + ' ' +
                       std::to_string(entry.size) + ' ' + std::to_string(entry.stored) + ' ' +
                       std::to_string(entry.object) + ' ' + hexOf(entry.content) + ' ' +
                       escaped(entry.program));
    }
    text += summed(std::string(endWord) + ' ' + std::to_string(entries.size()));
    return text;
}

} // namespace veltext
