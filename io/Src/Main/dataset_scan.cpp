// Steps from dataset to dataset, and guesses what old deletion marks replaced.
#include "io/Src/Main/dataset_scan.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

/// While an object of this class exists, nobody receives the reports of the
/// primitives.
class quiet_scope
{
public:
    explicit quiet_scope(open_file &file) : io_(file.io), report_(file.io.report), quiet_(*file.env)
    {
        quiet_.set_sink([](std::string_view) {});
        io_.report = &quiet_;
    }
    ~quiet_scope() { io_.report = report_; }
    quiet_scope(const quiet_scope &) = delete;
    quiet_scope &operator=(const quiet_scope &) = delete;

private:
    zot_io &io_;
    const io_reporter *report_;
    io_reporter quiet_;
};

long long printable(std::int64_t number)
{
    return number;
}

/// Bytes of a file for a message. Each unprintable byte becomes a point.
std::string printable_bytes(std::string_view bytes)
{
    std::string text(bytes);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '.');
    return text;
}

} // namespace

dataset_scan::dataset_scan(open_file &file, std::int64_t size)
    : file_(file), io_(file.io), size_(size), position_(first_dataset_position(file))
{
}

bool dataset_scan::stop(scan_end end, int code)
{
    end_ = end;
    code_ = io_.stream.failed() ? IO_READ_ERROR : code;
    return false;
}

// 1. Read the format code and the length.
// 2. A length of zero ends the scan.
// 3. By the word that follows: read a dataset's header, step over a deleted
//    one, step over an index.
bool dataset_scan::next()
{
    if (end_ != scan_end::running || !read_format() || !read_length()) {
        return false;
    }
    if (item_.length == 0) {
        return length_of_zero();
    }
    if (!read_word()) {
        return false;
    }
    position_ = item_.end;
    return true;
}

bool dataset_scan::resume()
{
    std::int64_t next = find_beginning(position_ + 1);
    if (next < 0) {
        return false;
    }
    position_ = next;
    end_ = scan_end::running;
    code_ = IO_OK;
    return true;
}

/// Looks for the words that follow a length; -1 if there are none.
std::int64_t dataset_scan::find_beginning(std::int64_t from)
{
    // Small, because the bytes may contain many such words that are not a
    // beginning.
    constexpr std::size_t block_bytes = 4096;
    constexpr std::size_t overlap = IO_TAG_DATASET.size() - 1;
    std::string block(block_bytes, '\0');
    for (std::int64_t at = from; at < size_; at += block_bytes - overlap) {
        std::size_t got = io_.stream.seek(at) ? io_.stream.read(block.data(), block_bytes) : 0;
        std::string_view text(block.data(), got);
        for (std::size_t star = text.find('*'); star != text.npos;
             star = text.find('*', star + 1)) {
            std::string_view word = text.substr(star);
            if (!word.starts_with(IO_TAG_DATASET) && !word.starts_with(IO_TAG_INDEX)) {
                continue;
            }
            std::int64_t place = at + static_cast<std::int64_t>(star);
            for (format_code format :
                 {format_code{'u', ' '}, format_code{'l', ' '}, IO_FORMATTED}) {
                std::int64_t begin = place - zotoffsetBytes(io_, format) -
                                     static_cast<std::int64_t>(IO_FORMAT_BYTES);
                if (begin >= from && begins_at(begin, place)) {
                    return begin;
                }
            }
        }
    }
    return -1;
}

/// Whether the format code at `position` belongs to the word at `word`.
bool dataset_scan::begins_at(std::int64_t position, std::int64_t word)
{
    std::array<char, IO_FORMAT_BYTES> bytes = {};
    if (!io_.stream.seek(position) || io_.stream.read(bytes.data(), bytes.size()) != bytes.size() ||
        !iofmt_is_letter(bytes[0]) || bytes[2] != '\n') {
        return false;
    }
    format_code format = {bytes[0], bytes[1]};
    std::vector<format_code> readings =
        format.deleted() ? iofmt_restore(format) : std::vector<format_code>{format};
    return std::any_of(readings.begin(), readings.end(), [&](format_code reading) {
        return position + static_cast<std::int64_t>(IO_FORMAT_BYTES) +
                   zotoffsetBytes(io_, reading) ==
               word;
    });
}

bool dataset_scan::damaged()
{
    std::array<char, 16> bytes = {};
    std::size_t got = io_.stream.seek(position_) ? io_.stream.read(bytes.data(), bytes.size()) : 0;
    std::string text = printable_bytes({bytes.data(), got});
    file_.report->notice(
        "recreate_indextable: Bad file: expected dataset, index or end, got \"%s\" at byte %lld\n",
        text.c_str(), printable(position_));
    return stop(scan_end::damaged, IO_BAD_FILE);
}

bool dataset_scan::read_format()
{
    item_ = scanned_dataset();
    item_.position = position_;
    if (position_ == size_) {
        return stop(scan_end::end_of_file);
    }
    std::array<char, IO_TAG_CRASH.size()> bytes = {};
    std::size_t got = 0;
    if (io_.stream.seek(position_)) {
        got = io_.stream.read(bytes.data(), bytes.size());
    }
    if (got == bytes.size() && std::string_view(bytes.data(), got) == IO_TAG_CRASH) {
        file_.report->notice("recreate_indextable: warning: file was not closed correctly, data"
                             " may be inconsistent");
        return stop(scan_end::crash);
    }
    bool cut_tag =
        got < bytes.size() && IO_TAG_CRASH.substr(0, got) == std::string_view(bytes.data(), got);
    if (got < IO_FORMAT_BYTES || cut_tag) {
        damaged();
        return stop(scan_end::cut);
    }
    if (!iofmt_is_letter(bytes[0]) || bytes[2] != '\n') {
        return damaged();
    }
    mark_ = {bytes[0], bytes[1]};
    item_.format = mark_;
    return true;
}

std::int64_t dataset_scan::length_field_end() const
{
    return item_.position + static_cast<std::int64_t>(IO_FORMAT_BYTES) +
           zotoffsetBytes(io_, item_.format);
}

bool dataset_scan::read_length()
{
    if (mark_.deleted()) {
        std::vector<format_code> candidates = iofmt_restore(mark_);
        if (candidates.size() > 1) {
            return choose_old_style(candidates);
        }
        item_.format = candidates.front();
    }
    item_.start = length_field_end();
    bool good = io_.stream.seek(item_.position + static_cast<std::int64_t>(IO_FORMAT_BYTES)) &&
                zotreadOffset(io_, item_.format, item_.length) == IO_OK;
    if (!good) {
        bool cut = item_.start > size_;
        file_.report->notice(
            "recreate_indextable: error reading initial dataset length in dataset of"
            " format %c%c, starting at offset %lld\n",
            mark_.letter, mark_.second, printable(item_.position));
        return cut ? stop(scan_end::cut) : stop(scan_end::damaged, IO_BAD_FILE);
    }
    if (item_.length < 0) {
        file_.report->notice("recreate_indextable: bad dataset length %lld",
                             printable(item_.length));
        return stop(scan_end::damaged, IO_BAD_FILE);
    }
    return true;
}

/// Whether the length in `format` leads to the same length at its end, which is
/// stored in `again`.
bool dataset_scan::agrees(format_code format, std::int64_t &again)
{
    quiet_scope quiet(file_);
    item_.format = format;
    item_.start = length_field_end();
    item_.length = 0;
    again = 0;
    return io_.stream.seek(item_.position + static_cast<std::int64_t>(IO_FORMAT_BYTES)) &&
           zotreadOffset(io_, format, item_.length) == IO_OK && item_.length > 0 &&
           item_.length <= size_ - item_.start && io_.stream.seek(item_.start + item_.length) &&
           zotreadOffset(io_, format, again) == IO_OK && again == item_.length;
}

/// Whether the words of a dataset follow the length in `format`, or would follow
/// if the file did not end there. The byte order of the words distinguishes the
/// formats.
dataset_scan::beginning dataset_scan::begins_as(format_code format)
{
    quiet_scope quiet(file_);
    std::string expected;
    if (format.formatted()) {
        expected.append(IO_TAG_DATASET).append("\n").append(IO_TAG_HEADER).append("\n");
    } else {
        auto count = static_cast<std::uint32_t>(IO_TAG_HEADER.size());
        char bytes[sizeof count];
        std::memcpy(bytes, &count, sizeof count);
        if (format.swapped()) {
            std::reverse(std::begin(bytes), std::end(bytes));
        }
        expected.append(IO_TAG_DATASET).append(bytes, sizeof bytes).append(IO_TAG_HEADER);
    }
    item_.format = format;
    std::string found(expected.size(), '\0');
    std::int64_t start = length_field_end();
    found.resize(io_.stream.seek(start) ? io_.stream.read(found.data(), found.size()) : 0);
    if (expected.compare(0, found.size(), found) != 0) {
        return beginning::other;
    }
    return found.size() == expected.size() ? beginning::header : beginning::cut;
}

// 1. Take the format whose two lengths agree.
// 2. Otherwise take the one whose words follow the length. The file ends inside
//    the dataset, or its lengths are wrong.
// 3. Otherwise the file may end before those words.
bool dataset_scan::choose_old_style(const std::vector<format_code> &candidates)
{
    std::int64_t again = 0;
    for (format_code candidate : candidates) {
        if (agrees(candidate, again)) {
            return true;
        }
    }
    auto begins = [this](beginning wanted) {
        return [this, wanted](format_code candidate) { return begins_as(candidate) == wanted; };
    };
    auto actual = std::find_if(candidates.begin(), candidates.end(), begins(beginning::header));
    bool known = actual != candidates.end();
    // Called for the format and for the lengths that it reads, which are checked
    // below.
    static_cast<void>(agrees(known ? *actual : candidates.front(), again));
    if (known && item_.length == 0) {
        return true;
    }
    bool cut = known ? item_.length > size_ - item_.start - zotoffsetBytes(io_, item_.format)
                     : std::any_of(candidates.begin(), candidates.end(), begins(beginning::cut));
    if (cut) {
        return cut_short();
    }
    const char letters[] = {mark_.letter, mark_.second, '\0'};
    file_.report->notice("recreate_indextable: Bad file: final dataset length field %lld is bad, or"
                         " differs from original dataset length field %lld in deleted dataset with"
                         " old-style format %s\n",
                         printable(again), printable(item_.length),
                         printable_bytes(letters).c_str());
    return stop(scan_end::damaged, IO_BAD_FILE);
}

bool dataset_scan::length_of_zero()
{
    bool readable = false;
    {
        quiet_scope quiet(file_);
        std::string word;
        readable = zotreadString(io_, item_.format, IO_TAG_DATASET.size(), word) == IO_OK &&
                   word == IO_TAG_DATASET &&
                   read_header(io_, item_.format, file_.name, item_.header) == IO_OK;
    }
    if (readable) {
        file_.report->notice("recreate_indextable: dataset length of zero in dataset %s:%s:%d at"
                             " offset %lld: assuming interrupted write and terminating scan.",
                             item_.header.what.c_str(), item_.header.where.c_str(),
                             item_.header.when, printable(item_.position));
    } else {
        file_.report->notice("recreate_indextable: dataset length of zero in dataset at offset %lld"
                             " (format %c%c): assuming incomplete file and terminating scan.",
                             printable(item_.position), mark_.letter, mark_.second);
    }
    return stop(scan_end::interrupted);
}

bool dataset_scan::read_word()
{
    std::array<char, IO_TAG_DATASET.size()> bytes = {};
    std::size_t got =
        io_.stream.seek(item_.start) ? io_.stream.read(bytes.data(), bytes.size()) : 0;
    std::string_view word(bytes.data(), got);
    if (mark_.formatted() && word.substr(0, IO_TAG_INDEX.size()) == IO_TAG_INDEX) {
        return skip_index();
    }
    if (word.substr(0, IO_TAG_CRASH.size()) == IO_TAG_CRASH) {
        file_.report->notice("recreate_indextable: warning: file was not closed correctly, data"
                             " may be inconsistent");
        return stop(scan_end::crash);
    }
    item_.end =
        item_.start + zotoffsetBytes(io_, item_.format); // the length added when it is checked
    if (item_.length > size_ - item_.end) {
        return cut_short();
    }
    item_.end += item_.length;
    if (word != IO_TAG_DATASET) {
        return damaged();
    }
    return mark_.deleted() ? skip_deleted() : read_dataset();
}

bool dataset_scan::cut_short()
{
    file_.report->notice(
        "recreate_indextable: fseek of %lld to skip dataset starting at %lld failed",
        printable(item_.length), printable(item_.position));
    return stop(scan_end::cut);
}

bool dataset_scan::read_dataset()
{
    std::int64_t behind_word = item_.start + static_cast<std::int64_t>(IO_TAG_DATASET.size()) +
                               (item_.format.formatted() ? 1 : 0);
    if (!io_.stream.seek(behind_word) ||
        read_header(io_, item_.format, file_.name, item_.header) != IO_OK) {
        return damaged();
    }
    item_.has_header = true;
    std::int64_t again = 0;
    int code = io_.stream.seek(item_.start + item_.length) ? zotreadOffset(io_, item_.format, again)
                                                           : IO_CANNOT_SEEK;
    if (code == IO_OK && again != item_.length) {
        code = IO_BAD_FILE;
    }
    if (code != IO_OK) {
        file_.report->notice(
            "recreate_indextable: error %d reading final dataset length for %s:%s:%d at offset"
            " %lld",
            code, item_.header.what.c_str(), item_.header.where.c_str(), item_.header.when,
            printable(item_.position));
        return stop(scan_end::damaged, IO_BAD_FILE);
    }
    item_.kind = scan_kind::dataset;
    return true;
}

bool dataset_scan::skip_deleted()
{
    item_.kind = scan_kind::deleted;
    std::int64_t again = 0;
    bool same = io_.stream.seek(item_.start + item_.length) &&
                zotreadOffset(io_, item_.format, again) == IO_OK && again == item_.length;
    if (!same) {
        const char letters[] = {mark_.letter, mark_.second, '\0'};
        file_.report->notice(
            "recreate_indextable: Bad file: final dataset length field %lld is bad,"
            " or differs from original dataset length field %lld in deleted dataset"
            " with byte-order-specific format %s\n",
            printable(again), printable(item_.length), printable_bytes(letters).c_str());
        return stop(scan_end::damaged, IO_BAD_FILE);
    }
    quiet_scope quiet(file_);
    std::int64_t behind_word = item_.start + static_cast<std::int64_t>(IO_TAG_DATASET.size()) +
                               (item_.format.formatted() ? 1 : 0);
    item_.has_header = io_.stream.seek(behind_word) &&
                       read_header(io_, item_.format, file_.name, item_.header) == IO_OK;
    return true;
}

bool dataset_scan::skip_index()
{
    item_.kind = scan_kind::index;
    std::int64_t trailer = 2 * zotoffsetBytes(io_, IO_FORMATTED);
    if (item_.length > size_ - item_.start - trailer) {
        file_.report->notice(
            "recreate_indextable: warning: truncated (or bad) index data at end of file while"
            " rebuilding index, file is corrupt but probably recoverable, continuing.  [%lld + %lld"
            " > %lld]",
            printable(item_.start), printable(item_.length), printable(size_));
        return stop(scan_end::cut);
    }
    std::int64_t ignored = 0;
    if (!io_.stream.seek(item_.start + item_.length) ||
        zotreadOffset(io_, IO_FORMATTED, ignored) != IO_OK) {
        file_.report->notice("recreate_indextable: failed to read first offset from skipped index");
        return stop(scan_end::cut);
    }
    if (zotreadOffset(io_, IO_FORMATTED, ignored) != IO_OK) {
        file_.report->notice(
            "recreate_indextable: failed to read second offset from skipped index");
        return stop(scan_end::cut);
    }
    item_.end = item_.start + item_.length + trailer;
    return true;
}
