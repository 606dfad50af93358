// Writes the index, reads it in one read, and builds it again from the datasets.
#include "io/Src/Main/index_file.h"

#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/dataset_scan.h"
#include "io/Src/Main/decimal.h"

#include <cstring>
#include <limits>

namespace {

constexpr std::size_t index_fields = 6;
constexpr std::int64_t around = IO_FORMAT_BYTES + 4 + 4; // of a dataset: code and both lengths

std::int64_t offset_bytes(const open_file &file)
{
    return zotoffsetBytes(file.io, IO_FORMATTED);
}

std::int64_t tag_bytes(std::string_view tag)
{
    return static_cast<std::int64_t>(tag.size()) + 1;
}

[[nodiscard]] int write_index_lines(open_file &file, std::int64_t length)
{
    zot_io &io = file.io;
    if (int code = zotwriteOffset(io, IO_FORMATTED, length)) {
        return code;
    }
    if (int code = write_tag(io, IO_FORMATTED, IO_TAG_INDEX)) {
        return code;
    }
    if (int code = zotwriteOffset(io, IO_FORMATTED, file.index.count())) {
        return code;
    }
    for (std::int32_t slot = 0; slot < file.index.count(); slot++) {
        const char *line = file.index.line(slot);
        if (!io.stream.write(line, std::strlen(line)) || !io.stream.write("\n", 1)) {
            return io_write_code();
        }
    }
    if (int code = write_tag(io, IO_FORMATTED, IO_TAG_END_INDEX)) {
        return code;
    }
    if (int code = zotwriteOffset(io, IO_FORMATTED, length)) {
        return code;
    }
    return zotwriteOffset(io, IO_FORMATTED, file.index_position);
}

/// Checks the lines and the sizes that they claim: together, the datasets cannot
/// need more of the file than the part before the index.
class line_check
{
public:
    line_check(std::int64_t first, std::int64_t end) : first_(first), end_(end), left_(end - first)
    {
    }

    bool good(std::string_view line)
    {
        std::string_view fields[index_fields];
        if (line.size() >= IO_INDEX_SLOT || !split(line, fields)) {
            return false;
        }
        std::int32_t when = 0;
        std::int64_t length = 0;
        std::int64_t position = 0;
        return (fields[0] == "Y" || fields[0] == "N") && parse_decimal(fields[3], when) &&
               parse_decimal(fields[4], length) && parse_decimal(fields[5], position) &&
               fields[1].size() <= IO_STRING_LENGTH && fields[2].size() <= IO_STRING_LENGTH &&
               inside(position, length);
    }

private:
    /// Exactly six fields, none of them empty.
    static bool split(std::string_view line, std::string_view (&fields)[index_fields])
    {
        for (std::size_t i = 0; i < index_fields; i++) {
            bool last = i + 1 == index_fields;
            std::size_t end = last ? line.size() : line.find(IO_ESC);
            if (end == 0 || end == std::string_view::npos) {
                return false;
            }
            fields[i] = line.substr(0, end);
            line.remove_prefix(last ? end : end + 1);
        }
        return fields[index_fields - 1].find(IO_ESC) == std::string_view::npos;
    }

    bool inside(std::int64_t position, std::int64_t length)
    {
        if (length < IO_DATASET_BYTES_MIN || length > left_ - around || position < first_ ||
            position > end_ - around - length) {
            return false;
        }
        left_ -= length + around;
        return true;
    }

    std::int64_t first_;
    std::int64_t end_;
    std::int64_t left_;
};

/// Removes white space at the ends of the names in a line, because look-ups use
/// names without it. Other writers may have stored some. `copy` receives the line
/// if it changes.
std::string_view trim_names(std::string_view line, std::string &copy)
{
    std::size_t what = line.find(IO_ESC) + 1;
    std::size_t where = line.find(IO_ESC, what) + 1;
    std::size_t rest = line.find(IO_ESC, where);
    if (what == 0 || where == 0 || rest == std::string_view::npos) {
        return line;
    }
    std::string_view old_what = line.substr(what, where - 1 - what);
    std::string_view old_where = line.substr(where, rest - where);
    std::string_view new_what = zottrimEnd(old_what);
    std::string_view new_where = zottrimEnd(old_where);
    bool same = new_what.size() == old_what.size() && new_where.size() == old_where.size();
    if (same || new_what.empty() || new_where.empty()) {
        return line;
    }
    copy.assign(line.substr(0, what)).append(new_what) += IO_ESC;
    copy.append(new_where).append(line.substr(rest));
    return copy;
}

/// Loads a stored index step by step. Each step reports its failure and returns
/// 20, or the code from the primitive that it called.
class index_loader
{
public:
    index_loader(open_file &file, std::int64_t size) : file_(file), io_(file.io), size_(size) {}

    [[nodiscard]] int load()
    {
        if (int code = find_position()) {
            return code;
        }
        if (int code = read_start()) {
            return code;
        }
        std::string text;
        if (int code = read_text(text)) {
            return code;
        }
        return split(text);
    }

    std::int64_t position() const { return position_; }

private:
    [[nodiscard]] int fail(const char *message)
    {
        return file_.report->error(IO_BAD_FILE, "%s", message);
    }

    [[nodiscard]] int find_position()
    {
        std::int64_t last = size_ - offset_bytes(file_);
        if (last < first_dataset_position(file_) || !io_.stream.seek(last)) {
            return fail("create_indextable: the file is too short for an index\n");
        }
        if (int code = zotreadOffset(io_, IO_FORMATTED, position_)) {
            return code;
        }
        if (position_ < first_dataset_position(file_) || position_ >= last ||
            !io_.stream.seek(position_)) {
            return fail("create_indextable: the index position is wrong\n");
        }
        return IO_OK;
    }

    [[nodiscard]] int read_start()
    {
        char code[IO_FORMAT_BYTES];
        if (io_.stream.read(code, sizeof code) != sizeof code || code[0] != 'F' ||
            code[2] != '\n') {
            return fail("create_indextable: index dataset is not formatted, file may be corrupt.");
        }
        if (int failed = zotreadOffset(io_, IO_FORMATTED, length_)) {
            return failed;
        }
        start_ = io_.stream.tell();
        std::string tag;
        if (zotreadString(io_, IO_FORMATTED, IO_TAG_INDEX.size(), tag) != IO_OK ||
            tag != IO_TAG_INDEX) {
            return fail("create_indextable: stored index is wrong: missing start tag\n");
        }
        if (zotreadOffset(io_, IO_FORMATTED, count_) != IO_OK || count_ < 0 ||
            count_ > std::numeric_limits<std::int32_t>::max()) {
            return fail("create_indextable: index is wrong: missing count\n");
        }
        return IO_OK;
    }

    /// The lines. The length says how many bytes they have, and this must fit the
    /// file exactly.
    [[nodiscard]] int read_text(std::string &text)
    {
        std::int64_t here = io_.stream.tell();
        std::int64_t bytes = length_ - (here - start_) - tag_bytes(IO_TAG_END_INDEX);
        if (length_ > size_ || start_ + length_ + 2 * offset_bytes(file_) != size_ || bytes < 0 ||
            count_ > bytes) {
            return fail("create_indextable: index is wrong: its length is not that of the file\n");
        }
        text.resize(static_cast<std::size_t>(bytes));
        if (io_.stream.read(text.data(), text.size()) != text.size()) {
            return file_.report->zotsystemErr(
                IO_READ_ERROR, "create_indextable: (can't read the whole index) syserr:");
        }
        std::string tag;
        std::int64_t again = 0;
        if (zotreadString(io_, IO_FORMATTED, IO_TAG_END_INDEX.size(), tag) != IO_OK ||
            tag != IO_TAG_END_INDEX || zotreadOffset(io_, IO_FORMATTED, again) != IO_OK ||
            again != length_) {
            return fail("create_indextable: index is wrong: missing end tag\n");
        }
        return IO_OK;
    }

    /// Allocates memory for all lines and the first growth after them at once. It
    /// does so only if the file is large enough for so many datasets, so the
    /// amount is reasonable.
    bool room_for(std::int32_t count)
    {
        bool possible =
            count <= (position_ - first_dataset_position(file_)) / (IO_DATASET_BYTES_MIN + around);
        return !possible || file_.index.reserve(count + IO_INDEX_GROWTH);
    }

    [[nodiscard]] int split(std::string_view text)
    {
        auto count = static_cast<std::int32_t>(count_);
        line_check check(first_dataset_position(file_), position_);
        if (!room_for(count)) {
            return file_.report->no_memory("create_indextable",
                                           count_ * static_cast<std::int64_t>(IO_INDEX_SLOT));
        }
        std::string copy;
        for (std::int32_t i = 0; i < count; i++) {
            if (text.empty()) {
                return file_.report->error(
                    IO_BAD_FILE, "create_indextable: index is wrong: line %d/%d missing\n", i + 1,
                    count);
            }
            std::size_t end = text.find('\n');
            if (end == std::string_view::npos) {
                return fail("create_indextable: index is wrong: error finding EOL\n");
            }
            std::string_view line = text.substr(0, end);
            if (!check.good(line) || line.find('\0') != std::string_view::npos) {
                return file_.report->error(IO_BAD_FILE,
                                           "create_indextable: index is wrong: bad line %d/%d\n",
                                           i + 1, count);
            }
            if (int code = file_.index.insert_index(*file_.report, trim_names(line, copy))) {
                return code;
            }
            text.remove_prefix(end + 1);
        }
        return text.empty() ? IO_OK : fail("create_indextable: index is wrong: too many lines\n");
    }

    open_file &file_;
    zot_io &io_;
    std::int64_t size_;
    std::int64_t position_ = 0; ///< position of the index
    std::int64_t length_ = 0;
    std::int64_t start_ = 0; ///< position of its tag
    std::int64_t count_ = 0;
};

} // namespace

int write_index(open_file &file)
{
    zot_io &io = file.io;
    std::int64_t length =
        tag_bytes(IO_TAG_INDEX) + offset_bytes(file) + tag_bytes(IO_TAG_END_INDEX);
    for (std::int32_t slot = 0; slot < file.index.count(); slot++) {
        length += static_cast<std::int64_t>(std::strlen(file.index.line(slot))) + 1;
    }
    const char code[IO_FORMAT_BYTES] = {IO_FORMATTED.letter, IO_FORMATTED.second, '\n'};
    if (!io.stream.write(code, sizeof code)) {
        return io_write_code();
    }
    return write_index_lines(file, length);
}

int create_indextable(open_file &file, std::int64_t size)
{
    file.index.clear();
    index_loader loader(file, size);
    if (int code = loader.load()) {
        file.index.clear();
        return code;
    }
    file.index_position = loader.position();
    return IO_OK;
}

int recreate_indextable(open_file &file, std::int64_t size)
{
    file.index.clear();
    file.index_position = first_dataset_position(file);
    dataset_scan scan(file, size);
    while (scan.next()) {
        const scanned_dataset &item = scan.item();
        if (item.kind == scan_kind::dataset) {
            std::string line = format_index_line('Y', item.header.what, item.header.where,
                                                 item.header.when, item.length, item.position);
            if (int code = file.index.insert_index(*file.report, line)) {
                return code;
            }
        }
        if (item.kind != scan_kind::index) {
            file.index_position = item.end;
        }
    }
    return scan.code();
}
