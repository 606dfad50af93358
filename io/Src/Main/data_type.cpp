// Parses data type strings, and counts the values that their elements need.
#include "io/Src/Main/data_type.h"

#include "io/Src/Main/decimal.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>

namespace {

constexpr std::size_t name_length = 4;

std::optional<element_type> find_type(std::string_view text)
{
    for (const element_traits &element : element_table) {
        if (text.substr(0, name_length) == element.name) {
            return element.type;
        }
    }
    return std::nullopt;
}

bool parse_count(std::string_view text, std::int32_t &count)
{
    bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    return digits && parse_decimal(text, count) && count >= 1;
}

[[nodiscard]] int unknown_type(const io_reporter &report, const std::string &text)
{
    return report.error(IO_PARSE_ERROR, "parseStructure: unrecognised type code \"%s\"",
                        text.c_str());
}

[[nodiscard]] int parse_single(const io_reporter &report, std::string_view text, data_type &type)
{
    std::string whole(text);
    std::optional<element_type> found = find_type(text);
    if (!found) {
        return unknown_type(report, whole);
    }
    type_entry entry;
    entry.type = *found;
    bool has_length = element_of(*found).has_length;
    entry.length = has_length ? static_cast<std::int32_t>(IO_STRING_LENGTH) : 0;
    std::size_t colon = text.find(':');
    if (colon != std::string_view::npos && !has_length) {
        return report.error(
            IO_PARSE_ERROR,
            "parseStructure: count forbidden for non-string type \"%s\" outside structure",
            whole.c_str());
    }
    if (colon != std::string_view::npos && !parse_count(text.substr(colon + 1), entry.length)) {
        return unknown_type(report, whole);
    }
    type.entries.push_back(entry);
    return IO_OK;
}

/// "INTR:3", "STRI:4:80"; false for anything else.
bool parse_entry(std::string_view text, type_entry &entry)
{
    std::optional<element_type> found = find_type(text);
    if (!found || text.size() <= name_length || text[name_length] != ':') {
        return false;
    }
    entry.type = *found;
    bool has_length = element_of(*found).has_length;
    std::string_view number = text.substr(name_length + 1);
    std::size_t colon = number.find(':');
    if (!parse_count(number.substr(0, colon), entry.count)) {
        return false;
    }
    if (colon != std::string_view::npos) {
        std::int32_t factor = 0;
        if (!has_length || !parse_count(number.substr(colon + 1), factor)) {
            return false;
        }
        std::int64_t product = std::int64_t{entry.count} * factor;
        if (product > std::numeric_limits<std::int32_t>::max()) {
            return false;
        }
        entry.count = static_cast<std::int32_t>(product);
    }
    entry.length = has_length ? entry.count : 0;
    return true;
}

[[nodiscard]] int parse_entries(const io_reporter &report, std::string_view body, data_type &type)
{
    for (int counted = 0;; counted++) {
        std::size_t blank = body.find(' ');
        std::string text(body.substr(0, blank));
        type_entry entry;
        if (!parse_entry(text, entry)) {
            return report.error(IO_PARSE_ERROR,
                                "parseStructure: unrecognised type name or missing count: \"%s\"",
                                text.c_str());
        }
        type.entries.push_back(entry);
        if (blank == std::string_view::npos) {
            return IO_OK;
        }
        // Kept: the test comes after the entry and counts the entries before it,
        // so 41 entries are accepted.
        if (counted >= IO_MAXENT) {
            return report.error(
                IO_NO_ROOM, "parseStructure: the entries of the datatype is more than IO_MAXENT\n");
        }
        body.remove_prefix(blank);
        body.remove_prefix(std::min(body.find_first_not_of(' '), body.size()));
    }
}

[[nodiscard]] int parse_record(const io_reporter &report, std::string_view text, data_type &type)
{
    type.structure = true;
    if (text.empty() || text[0] != '{') {
        return report.error(IO_PARSE_ERROR, "parseStructure: missing '{' in structure string\n");
    }
    std::size_t end = text.find('}');
    if (end == std::string_view::npos) {
        return report.error(IO_PARSE_ERROR, "parseStructure: missing '}' in structure string\n");
    }
    if (end == 1 || end + 1 != text.size()) {
        return report.error(IO_PARSE_ERROR, "parseStructure: data type string is wrong\n");
    }
    return parse_entries(report, text.substr(1, end - 1), type);
}

} // namespace

std::int64_t type_entry::bytes() const
{
    const element_traits &element = element_of(type);
    return element.has_length ? length : count * static_cast<std::int64_t>(element.word_bytes);
}

std::int64_t data_type::bytes() const
{
    std::int64_t sum = 0;
    for (const type_entry &entry : entries) {
        sum += entry.bytes();
    }
    return sum;
}

std::int64_t data_type::formatted_bytes() const
{
    if (structure) {
        return 1; // the LF; the reader reports other bytes of a damaged record
    }
    return element_of(single()).formatted_bytes;
}

element_counts data_type::counts() const
{
    element_counts counts = {};
    for (const type_entry &entry : entries) {
        counts[static_cast<std::size_t>(entry.type)] += entry.values();
    }
    return counts;
}

std::size_t data_type::string_slot() const
{
    std::int32_t longest = 0;
    for (const type_entry &entry : entries) {
        longest = std::max(longest, entry.length);
    }
    return static_cast<std::size_t>(longest) + 1;
}

bool data_type::operator==(const data_type &other) const
{
    auto same = [](const type_entry &a, const type_entry &b) {
        return a.type == b.type && a.count == b.count && a.length == b.length;
    };
    return structure == other.structure &&
           std::equal(entries.begin(), entries.end(), other.entries.begin(), other.entries.end(),
                      same);
}

int parseStructure(const io_reporter &report, std::string_view text, data_type &type)
{
    type = data_type();
    constexpr std::string_view record = "STRC";
    if (text.substr(0, record.size()) == record) {
        return parse_record(report, text.substr(record.size()), type);
    }
    return parse_single(report, text, type);
}
