// Formats and parses the elements of datasets.
#include "tools/veltool/ds/dsValues.h"

#include "common/takeLine.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/support/output.h"

#include "io/Src/Main/zot_numbers.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace veltool {

namespace {

/// How a line contains the values of a type.
enum class Notation {
    Characters, ///< side by side, one character each
    Text,       ///< a field without spaces at its end
    Number      ///< a field
};

Notation notationOf(element_type type)
{
    switch (type) {
    case IO_CHAR:
        return Notation::Characters;
    case IO_STRI:
        return Notation::Text;
    case IO_INTR:
    case IO_REAL:
    case IO_DBLE:
    case IO_LOGL:
        break;
    }
    return Notation::Number;
}

/// The index of the next value of each type in the arrays.
class ArrayCursor
{
public:
    /// Moves past `number` values and returns the index of the first.
    std::size_t take(element_type type, std::int64_t number)
    {
        std::int64_t &next = next_[static_cast<std::size_t>(type)];
        next += number;
        return static_cast<std::size_t>(next - number);
    }

private:
    element_counts next_ = {};
};

void appendReal(std::string &line, double value, int digits)
{
    // Like "%.*g", but independent of the locale.
    char text[40];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits);
    line.append(text, end.ptr);
}

std::string_view withoutTrailingBlanks(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

void appendValue(std::string &line, element_type type, const IO_data &data, std::size_t at,
                 std::size_t slot)
{
    switch (type) {
    case IO_STRI:
        line += withoutTrailingBlanks(data.strings + at * slot);
        break;
    case IO_INTR:
        line += std::to_string(data.integers[at]);
        break;
    case IO_REAL:
        appendReal(line, static_cast<double>(data.reals[at]), 9);
        break;
    case IO_DBLE:
        appendReal(line, data.doubles[at], 17);
        break;
    case IO_LOGL:
        line += data.logicals[at] ? '1' : '0';
        break;
    case IO_CHAR:
        line += data.chars[at];
        break;
    }
}

void appendEntry(std::string &line, const type_entry &entry, const IO_data &data,
                 ArrayCursor &cursor, std::size_t slot)
{
    const std::size_t first = cursor.take(entry.type, entry.values());
    const std::size_t end = first + static_cast<std::size_t>(entry.values());
    const bool sideBySide = notationOf(entry.type) == Notation::Characters;
    for (std::size_t at = first; at < end; ++at) {
        if (at > first && !sideBySide) {
            line += '\t';
        }
        appendValue(line, entry.type, data, at, slot);
    }
}

bool isCharacters(const data_type &type)
{
    return !type.structure && notationOf(type.single()) == Notation::Characters;
}

std::string_view withoutFinalLineFeed(std::string_view text)
{
    return text.substr(0, text.size() - (text.ends_with('\n') ? 1 : 0));
}

template <typename Real>
bool parseReal(std::string_view field, Real &value)
{
    const std::size_t begin = field.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        return false;
    }
    field = withoutTrailingBlanks(field.substr(begin));
    if (field.size() > 1 && field[0] == '+' && field[1] != '-') {
        field.remove_prefix(1);
    }
    const char *end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, value);
    return error == std::errc() && stop == end;
}

/// Reads the values of one line after the other into the arrays.
class LineParser
{
public:
    LineParser(const data_type &type, IO_data &data) : type_(type), data_(data) {}

    void parse(std::string_view line)
    {
        ++number_;
        rest_ = line;
        atStart_ = true;
        for (const type_entry &entry : type_.entries) {
            parseEntry(entry);
        }
        if (!rest_.empty()) {
            fail("too many values", IO_READ_ERROR);
        }
    }

private:
    [[noreturn]] void fail(const std::string &what, int code) const
    {
        throw ContainerFailure("line " + std::to_string(number_) + ": " + what, code);
    }

    void parseEntry(const type_entry &entry)
    {
        const auto values = static_cast<std::size_t>(entry.values());
        const std::size_t first = cursor_.take(entry.type, entry.values());
        switch (notationOf(entry.type)) {
        case Notation::Characters:
            takeCharacters(values, first);
            break;
        case Notation::Text:
            for (std::size_t at = first; at < first + values; ++at) {
                storeString(takeField(), entry.length, at);
            }
            break;
        case Notation::Number:
            for (std::size_t at = first; at < first + values; ++at) {
                takeNumber(entry.type, at);
            }
            break;
        }
    }

    void takeCharacters(std::size_t values, std::size_t first)
    {
        takeSeparator();
        if (rest_.size() < values) {
            fail("too few characters", IO_BAD_STRING);
        }
        rest_.copy(data_.chars + first, values);
        rest_.remove_prefix(values);
    }

    void takeNumber(element_type type, std::size_t at)
    {
        const std::string_view field = takeField();
        if (!storeNumber(field, type, at)) {
            fail("not of type " + std::string(element_type_name(type)) + ": \"" +
                     std::string(field) + '"',
                 IO_READ_ERROR);
        }
    }

    /// Moves past the tab before each value except the first.
    void takeSeparator()
    {
        if (!atStart_ && (rest_.empty() || rest_[0] != '\t')) {
            fail(rest_.empty() ? "too few values" : "missing tab after a value", IO_BAD_STRING);
        }
        if (!atStart_) {
            rest_.remove_prefix(1);
        }
        atStart_ = false;
    }

    std::string_view takeField()
    {
        takeSeparator();
        const std::size_t end =
            type_.structure ? std::min(rest_.find('\t'), rest_.size()) : rest_.size();
        const std::string_view field = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return field;
    }

    void storeString(std::string_view field, std::int32_t length, std::size_t at)
    {
        field = withoutTrailingBlanks(field);
        if (field.size() > static_cast<std::size_t>(length)) {
            fail("a string is longer than " + std::to_string(length) + " characters", IO_NO_ROOM);
        }
        char *slot = data_.strings + at * type_.string_slot();
        field.copy(slot, field.size());
        slot[field.size()] = '\0';
    }

    bool storeNumber(std::string_view field, element_type type, std::size_t at)
    {
        switch (type) {
        case IO_INTR:
            return zotparseIntr(field, data_.integers[at]);
        case IO_REAL:
            return parseReal(field, data_.reals[at]);
        case IO_DBLE:
            return parseReal(field, data_.doubles[at]);
        case IO_LOGL:
            return zotparseLogl(field, data_.logicals[at]);
        case IO_STRI:
        case IO_CHAR:
            break; // they are stored as texts
        }
        return false;
    }

    const data_type &type_;
    IO_data &data_;
    ArrayCursor cursor_;
    std::string_view rest_;
    bool atStart_ = true;
    std::size_t number_ = 0;
};

} // namespace

void printValues(const data_type &type, std::int32_t count, const IO_data &data)
{
    if (isCharacters(type)) {
        out() << std::string_view(data.chars, static_cast<std::size_t>(count)) << '\n';
        return;
    }
    const std::size_t slot = type.string_slot();
    ArrayCursor cursor;
    std::string line;
    for (std::int32_t i = 0; i < count; ++i) {
        line.clear();
        for (const type_entry &entry : type.entries) {
            if (&entry != type.entries.data()) {
                line += '\t';
            }
            appendEntry(line, entry, data, cursor, slot);
        }
        out() << line << '\n';
    }
}

std::int32_t countElements(const data_type &type, std::string_view text)
{
    std::size_t count = withoutFinalLineFeed(text).size();
    if (!isCharacters(type)) {
        count = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        count += !text.empty() && !text.ends_with('\n') ? 1 : 0;
    }
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw ContainerFailure("too many elements", IO_NO_ROOM);
    }
    return static_cast<std::int32_t>(count);
}

void parseValues(const data_type &type, std::string_view text, IO_data &data)
{
    if (isCharacters(type)) {
        text = withoutFinalLineFeed(text);
        text.copy(data.chars, text.size());
        return;
    }
    LineParser parser(type, data);
    while (!text.empty()) {
        parser.parse(velEditor::takeLine(&text));
    }
}

} // namespace veltool
