// The records of a header: writer and reader of each.
#include "io/Src/Main/dataset_header.h"

#include "io/Src/Main/decimal.h"

#include <algorithm>

namespace {

bool has_control_characters(std::string_view text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
}

bool fits(std::string_view text, std::size_t most)
{
    return text.size() <= most && !has_control_characters(text);
}

std::string record_text(std::string_view key, std::string_view value)
{
    std::string text(key);
    text += IO_ESC;
    text += value;
    return text;
}

/// Reads records and says which one is wrong.
class header_reader
{
public:
    header_reader(zot_io &io, format_code format, const std::string &file)
        : io_(io), format_(format), file_(file)
    {
    }

    [[nodiscard]] int text(std::string_view key, const char *name, std::size_t most,
                           std::string &value)
    {
        std::string record;
        if (int code = zotreadHdrString(io_, format_, most, record)) {
            return code;
        }
        if (record.compare(0, key.size(), key) != 0 || record.size() <= key.size() ||
            record[key.size()] != IO_ESC) {
            return bad(name, record);
        }
        value = record.substr(key.size() + 1);
        return IO_OK;
    }

    /// A text that a look-up can ask for: not empty, without control characters.
    [[nodiscard]] int name(std::string_view key, const char *name, std::string &value)
    {
        if (int code = text(key, name, IO_RECORD_MAX, value)) {
            return code;
        }
        return value.empty() || has_control_characters(value) ? bad(name, value) : IO_OK;
    }

    [[nodiscard]] int number(std::string_view key, const char *name, std::int32_t least,
                             std::int32_t &value)
    {
        std::string digits;
        if (int code = text(key, name, IO_RECORD_MAX, digits)) {
            return code;
        }
        return parse_decimal(digits, value) && value >= least ? IO_OK : bad(name, digits);
    }

    [[nodiscard]] int bad(const char *name, const std::string &record)
    {
        return io_.report->error(IO_BAD_FORMAT, "read_header: bad %s record %s in %s\n", name,
                                 record.c_str(), file_.c_str());
    }

    [[nodiscard]] int attributes(std::vector<std::string> &values)
    {
        std::int32_t count = 0;
        if (int code = number(IO_KEY_ATTRIBUTES, "numattrb", 0, count)) {
            return code;
        }
        values.clear();
        if (count > IO_ATTRIBUTES_MAX) {
            return bad("numattrb", std::to_string(count));
        }
        for (std::int32_t i = 0; i < count; i++) {
            if (int code =
                    zotreadHdrString(io_, format_, IO_ATTRIBUTE_MAX, values.emplace_back())) {
                return code;
            }
        }
        return IO_OK;
    }

    /// Looks at the record after NUMBER, which may be the data tag, and goes back.
    [[nodiscard]] int blockfactor(std::int32_t &value)
    {
        std::int64_t start = io_.stream.tell();
        bool present = at_blockfactor();
        if (!io_.stream.seek(start)) {
            return io_.report->zotsystemErr(IO_CANNOT_SEEK, "read_header: fseek failed");
        }
        if (present) {
            return number(IO_KEY_BLOCKFACTOR, "blockfactor", 1, value);
        }
        value = 0;
        if (format_.compressed()) {
            return io_.report->error(
                IO_BAD_FORMAT, "read_header: blockfactor missing for compressed dataset in %s",
                file_.c_str());
        }
        return IO_OK;
    }

private:
    bool at_blockfactor()
    {
        std::size_t count = format_.formatted() ? 0 : sizeof(std::int32_t);
        char bytes[sizeof(std::int32_t) + IO_KEY_BLOCKFACTOR.size()];
        std::size_t wanted = count + IO_KEY_BLOCKFACTOR.size();
        return io_.stream.read(bytes, wanted) == wanted &&
               std::string_view(bytes + count, IO_KEY_BLOCKFACTOR.size()) == IO_KEY_BLOCKFACTOR;
    }

    zot_io &io_;
    format_code format_;
    const std::string &file_;
};

} // namespace

bool header_is_writable(const dataset_header &header)
{
    auto good_attribute = [](const std::string &text) { return fits(text, IO_ATTRIBUTE_MAX); };
    return !header.what.empty() && fits(header.what, IO_WHAT_MAX) && !header.where.empty() &&
           fits(header.where, IO_WHERE_MAX) && fits(header.type, IO_TYPE_MAX) &&
           header.count >= 0 &&
           header.attributes.size() <= static_cast<std::size_t>(IO_ATTRIBUTES_MAX) &&
           std::all_of(header.attributes.begin(), header.attributes.end(), good_attribute);
}

std::int32_t header_blockfactor(format_code format, std::int32_t asked)
{
    if (format.formatted()) {
        return std::max(asked, 1);
    }
    if (!format.compressed()) {
        return 0;
    }
    return asked <= 1 ? IO_BLOCKFACTOR : asked;
}

int write_header(zot_io &io, format_code format, const dataset_header &header)
{
    auto record = [&](std::string_view key, std::string_view value, std::size_t most) {
        return zotwriteHdrString(io, format, record_text(key, value), most);
    };
    auto number = [&](std::string_view key, std::int64_t value) {
        return record(key, std::to_string(value), IO_RECORD_MAX);
    };
    if (int code = zotwriteHdrString(io, format, IO_TAG_HEADER, IO_TAG_HEADER.size())) {
        return code;
    }
    if (int code = record(IO_KEY_WHAT, header.what, IO_RECORD_MAX)) {
        return code;
    }
    if (int code = record(IO_KEY_WHERE, header.where, IO_RECORD_MAX)) {
        return code;
    }
    if (int code = number(IO_KEY_WHEN, header.when)) {
        return code;
    }
    if (int code = number(IO_KEY_ATTRIBUTES, static_cast<std::int64_t>(header.attributes.size()))) {
        return code;
    }
    for (const std::string &attribute : header.attributes) {
        if (int code = zotwriteHdrString(io, format, attribute, IO_ATTRIBUTE_MAX)) {
            return code;
        }
    }
    if (int code = record(IO_KEY_TYPE, header.type, IO_TYPE_RECORD_MAX)) {
        return code;
    }
    if (int code = number(IO_KEY_NUMBER, header.count)) {
        return code;
    }
    return header.blockfactor > 0 ? number(IO_KEY_BLOCKFACTOR, header.blockfactor) : IO_OK;
}

int read_header(zot_io &io, format_code format, const std::string &file, dataset_header &header)
{
    header_reader reader(io, format, file);
    std::string tag;
    if (int code = zotreadHdrString(io, format, IO_TAG_HEADER.size(), tag)) {
        return code;
    }
    if (tag != IO_TAG_HEADER) {
        return reader.bad("header", tag);
    }
    if (int code = reader.name(IO_KEY_WHAT, "what", header.what)) {
        return code;
    }
    if (int code = reader.name(IO_KEY_WHERE, "where", header.where)) {
        return code;
    }
    constexpr std::int32_t any = INT32_MIN;
    if (int code = reader.number(IO_KEY_WHEN, "when", any, header.when)) {
        return code;
    }
    if (int code = reader.attributes(header.attributes)) {
        return code;
    }
    if (int code = reader.text(IO_KEY_TYPE, "datatype", IO_TYPE_RECORD_MAX, header.type)) {
        return code;
    }
    if (int code = reader.number(IO_KEY_NUMBER, "number", 0, header.count)) {
        return code;
    }
    return reader.blockfactor(header.blockfactor);
}

int write_datatag(zot_io &io, format_code format)
{
    return zotwriteHdrString(io, format, IO_TAG_DATA, IO_TAG_DATA.size());
}

int read_datatag(zot_io &io, format_code format)
{
    auto length = static_cast<std::int32_t>(IO_TAG_DATA.size());
    if (!format.formatted()) {
        std::int32_t count = 0;
        if (int code = zotreadCount(io, format, count)) {
            return code;
        }
        if (count != length) {
            return io.report->error(IO_BAD_FORMAT,
                                    "read_datatag: bad tag length, read %d, should be %d", count,
                                    length);
        }
    }
    std::string tag;
    if (int code = zotreadString(io, format, IO_TAG_DATA.size(), tag)) {
        return code;
    }
    if (tag != IO_TAG_DATA) {
        return io.report->error(IO_BAD_FORMAT, "read_datatag: bad tag, read \"%s\", should be %s",
                                tag.c_str(), std::string(IO_TAG_DATA).c_str());
    }
    return IO_OK;
}

int write_tag(zot_io &io, format_code format, std::string_view tag)
{
    return zotwriteString(io, format, tag, tag.size());
}
