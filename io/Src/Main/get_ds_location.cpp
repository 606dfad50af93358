// Splits index lines; searches by WHAT, by WHERE and in all lines.
#include "io/Src/Main/get_ds_location.h"

#include "io/Src/Main/element_arrays.h"
#include "io/Src/Main/glob.h"
#include "io/Src/Main/zot_primitives.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t key_start = 2; // after the status and its ESC

/// The next field of a line; empty at its end. Skips empty fields.
std::string_view next_field(const char *&line)
{
    while (*line == IO_ESC) {
        line++;
    }
    const char *start = line;
    while (*line != '\0' && *line != IO_ESC) {
        line++;
    }
    return {start, static_cast<std::size_t>(line - start)};
}

/// Like atoi(): a text that is not a number gives 0.
template <typename Integer>
Integer leading_number(std::string_view text)
{
    Integer number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// The common beginning of all lines that are searched: texts and a WHEN, each
/// ended by ESC. If it is longer than a slot, no line can match.
class search_key
{
public:
    void add(std::string_view text)
    {
        if (length_ + text.size() + 1 > sizeof bytes_) {
            too_long_ = true;
            return;
        }
        std::memcpy(bytes_ + length_, text.data(), text.size());
        length_ += text.size();
        bytes_[length_++] = IO_ESC;
    }

    void add(std::int32_t when)
    {
        char digits[16];
        char *end = std::to_chars(digits, digits + sizeof digits, when).ptr;
        add(std::string_view(digits, static_cast<std::size_t>(end - digits)));
    }

    /// Whether the text is below, at or above the prefix. It must end
    /// with a NUL.
    [[nodiscard]] int compare(const char *text) const
    {
        return std::strncmp(text, bytes_, length_);
    }
    bool too_long() const { return too_long_; }

private:
    char bytes_[IO_INDEX_SLOT];
    std::size_t length_ = 0;
    bool too_long_ = false;
};

/// Collects the live lines that begin with the key, starting at the `low`-th of
/// the ordered lines. slot(i) is the i-th in that order, and text(slot) is the
/// text to compare.
template <typename Slot, typename Text>
[[nodiscard]] int collect(const io_reporter &report, const index_table &index,
                          const search_key &key, std::int32_t low, Slot slot, Text text,
                          const char *failure, located_datasets &found)
{
    std::int32_t high = key.too_long() ? low : index.count();
    // The first match is usually near `low`, so the search widens from there.
    for (std::int32_t step = 1; low < high && step < high - low; step *= 2) {
        if (key.compare(text(slot(low + step - 1))) >= 0) {
            high = low + step;
            break;
        }
        low += step;
    }
    while (low < high) {
        std::int32_t middle = low + (high - low) / 2;
        if (key.compare(text(slot(middle))) < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    for (; low < index.count() && !key.too_long(); low++) {
        std::int32_t at = slot(low);
        if (key.compare(text(at)) != 0) {
            break;
        }
        if (index.status(at) != 'Y') {
            continue;
        }
        located_dataset &record = found.emplace_back();
        if (int code = parseindex(report, index.line(at), record)) {
            return report.error(code, "%s", failure);
        }
        record.slot = at;
    }
    return IO_OK;
}

[[nodiscard]] int by_what(const io_reporter &report, index_table &index, const char *what,
                          const char *where, std::int32_t when, located_datasets &found)
{
    if (glob_has_pattern(what)) {
        return report.error(
            IO_PARSE_ERROR,
            "INST: get_ds_sortwhat_location with IO_SORT_WHAT when WHAT is a wildcard in"
            " get_ds_location\n");
    }
    index.sort_by_what();
    search_key key;
    key.add(what);
    if (where != nullptr) {
        key.add(where);
        if (when >= 0) {
            key.add(when);
        }
    }
    std::int32_t first = 0;
    bool plain = where != nullptr && std::strchr(what, IO_ESC) == nullptr &&
                 std::strchr(where, IO_ESC) == nullptr;
    if (plain) {
        first = index.first_of_name(what, where);
    }
    return collect(
        report, index, key, first, [](std::int32_t i) { return i; },
        [&](std::int32_t slot) { return index.line(slot) + key_start; },
        "get_ds_location: parseindex failed\n", found);
}

[[nodiscard]] int by_where(const io_reporter &report, index_table &index, const char *where,
                           std::int32_t when, located_datasets &found)
{
    const std::vector<std::int32_t> &order = index.where_order();
    search_key key;
    key.add(where);
    if (when >= 0) {
        key.add(when);
    }
    return collect(
        report, index, key, 0, [&](std::int32_t i) { return order[static_cast<std::size_t>(i)]; },
        [&](std::int32_t slot) { return index_line_where(index.line(slot)); },
        "get_ds_location: parsewhere failed\n", found);
}

[[nodiscard]] int full_scan(const io_reporter &report, index_table &index, const char *what,
                            const char *where, std::int32_t when, located_datasets &found)
{
    for (std::int32_t slot = 0; slot < index.count(); slot++) {
        if (index.status(slot) == 'N') {
            continue;
        }
        located_dataset record = {};
        if (int code = parseindex(report, index.line(slot), record)) {
            return report.error(code, "get_ds_location: parseindex failed\n");
        }
        record.slot = slot;
        if (glob_match(what, record.what) && glob_match(where, record.where) &&
            (when < 0 || when == record.when)) {
            found.push_back(record);
        }
    }
    return IO_OK;
}

/// A name without white space at its end. The name is copied only if it has some.
class trimmed_name
{
public:
    explicit trimmed_name(const char *name) : name_(name)
    {
        std::string_view kept = zottrimEnd(name);
        if (name[kept.size()] != '\0') {
            copy_ = kept;
            name_ = copy_.c_str();
        }
    }
    trimmed_name(const trimmed_name &) = delete;
    trimmed_name &operator=(const trimmed_name &) = delete;

    const char *c_str() const { return name_; }

private:
    std::string copy_;
    const char *name_;
};

[[nodiscard]] int malloc_failed(const io_reporter &report, const char *function)
{
    return report.zotsystemErr(IO_NO_ROOM, "%s: (malloc failed) syserr:", function);
}

/// get_ds_location() for the pattern search with the given name.
[[nodiscard]] int locate_for(const char *function, const io_reporter &report, index_table &index,
                             location_mode mode, const char *what, const char *where,
                             std::int32_t when, located_datasets &found)
{
    try {
        return get_ds_location(report, index, mode, what, where, when, found);
    } catch (const std::bad_alloc &) {
        return malloc_failed(report, function);
    }
}

[[nodiscard]] int locate_all_what(const io_reporter &report, index_table &index, const char *what,
                                  const char *where, std::int32_t when, located_datasets &found)
{
    if (int code =
            locate_for("locate_all_what", report, index, IO_SORT_WHAT, what, nullptr, -1, found)) {
        return report.error(code, "locate_all_what: get_ds_location failed\n");
    }
    std::erase_if(found, [&](const located_dataset &record) {
        return !glob_match(where, record.where) || (when >= 0 && when != record.when);
    });
    return IO_OK;
}

[[nodiscard]] int locate_all_where(const io_reporter &report, index_table &index, const char *what,
                                   const char *where, std::int32_t when, located_datasets &found)
{
    if (int code = locate_for("locate_all_where", report, index, IO_SORT_WHERE, what, where, when,
                              found)) {
        return report.error(code, "locate_all_where: get_ds_location failed\n");
    }
    std::erase_if(found, [&](const located_dataset &record) {
        if (index.status(record.slot) != 'Y') {
            report.notice("WARNING: in locate_all_where, got a deleted dataset returned from"
                          " get_ds_location(IO_SORT_WHERE): %s:%s:%d\n",
                          record.what, record.where, record.when);
            return true;
        }
        return !glob_match(what, record.what);
    });
    return IO_OK;
}

/// Sets the slot of each found line that the index marks as deleted to −1, and
/// gives the live lines in their order.
[[nodiscard]] int update_subindex(const io_reporter &report, const index_table &index,
                                  located_datasets &found, located_datasets &live)
{
    try {
        live.reserve(found.size());
        for (located_dataset &record : found) {
            if (index.status(record.slot) == 'Y') {
                live.push_back(record);
            } else {
                record.slot = -1;
            }
        }
        return IO_OK;
    } catch (const std::bad_alloc &) {
        return malloc_failed(report, "update_subindex");
    }
}

/// Orders by the largest WHEN first. Kept: equal WHENs are ordered by WHAT from
/// the third character only, as if WHAT still had a status before it. Files and
/// clients depend on this order.
void sort_by_when(const io_reporter &report, located_datasets &found)
{
    auto count = static_cast<int>(found.size());
    report.trace("about to sort %d datasets by WHEN", count);
    auto tail = [](const located_dataset &record) {
        return record.what + strnlen(record.what, key_start);
    };
    std::stable_sort(
        found.begin(), found.end(), [&](const located_dataset &a, const located_dataset &b) {
            return a.when != b.when ? a.when > b.when : std::strcmp(tail(a), tail(b)) < 0;
        });
    report.trace("sorted %d datasets by WHEN", count);
}

[[nodiscard]] int find_live(const io_reporter &report, index_table &index, const char *what,
                            const char *where, std::int32_t when, located_datasets &found)
{
    if (!index.sorted()) {
        report.trace("sorting whatlist in locate_dataset");
        index.sort_by_what();
    }
    report.trace("start to locate %s:%s:%d", what, where, when);
    bool what_pattern = glob_has_pattern(what);
    bool where_pattern = glob_has_pattern(where);
    int code = IO_OK;
    if (what_pattern && where_pattern) {
        code = get_ds_location(report, index, IO_FULL_SCAN, what, where, when, found);
    } else if (what_pattern) {
        code = locate_all_where(report, index, what, where, when, found);
    } else if (where_pattern) {
        code = locate_all_what(report, index, what, where, when, found);
    } else {
        code = get_ds_location(report, index, IO_SORT_WHAT, what, where, when, found);
    }
    if (code != IO_OK) {
        return report.error(code, "locate_dataset: main dataset location failed\n");
    }
    if (found.size() < 2) {
        return IO_OK;
    }
    located_datasets live;
    if (int failed = update_subindex(report, index, found, live)) {
        return failed;
    }
    auto matched = static_cast<std::int32_t>(found.size());
    auto deleted = static_cast<std::int32_t>(std::count_if(
        found.begin(), found.end(), [](const located_dataset &record) { return record.slot < 0; }));
    report.trace("matched %d datasets in locate_dataset, %d were deleted", matched, deleted);
    auto copied = static_cast<std::int32_t>(live.size());
    if (copied != matched - deleted) {
        return report.error(IO_UNKNOWN_ERROR, "Internal Error: located %d datasets, expected %d\n",
                            copied, matched - deleted);
    }
    found = std::move(live);
    if (when < 0) {
        sort_by_when(report, found);
    }
    return IO_OK;
}

} // namespace

std::string format_index_line(char status, std::string_view what, std::string_view where,
                              std::int32_t when, std::int64_t length, std::int64_t position)
{
    std::string line(1, status);
    auto add = [&line](std::string_view field) {
        line += IO_ESC;
        line += field;
    };
    add(what);
    add(where);
    add(std::to_string(when));
    add(std::to_string(length));
    add(std::to_string(position));
    return line;
}

int parseindex(const io_reporter &report, const char *line, located_dataset &record)
{
    if (next_field(line).empty()) {
        return report.error(IO_PARSE_ERROR, "parseindex: bad index: missing status code\n");
    }
    std::string_view field = next_field(line);
    if (field.empty()) {
        return report.error(IO_PARSE_ERROR, "parseindex: bad index: missing what\n");
    }
    io_set_text(record.what, field);
    field = next_field(line);
    if (field.empty()) {
        return report.error(IO_PARSE_ERROR,
                            "parseindex: bad index: missing where in dataset %s:?:?\n",
                            record.what);
    }
    io_set_text(record.where, field);
    field = next_field(line);
    if (field.empty()) {
        return report.error(IO_PARSE_ERROR,
                            "parseindex: bad index: missing when in dataset %s:%s:?\n", record.what,
                            record.where);
    }
    record.when = leading_number<std::int32_t>(field);
    field = next_field(line);
    if (field.empty()) {
        return report.error(IO_PARSE_ERROR,
                            "parseindex: bad index: missing dslength for dataset %s:%s:%d\n",
                            record.what, record.where, record.when);
    }
    record.length = leading_number<std::int64_t>(field);
    field = next_field(line);
    if (field.empty()) {
        return report.error(IO_PARSE_ERROR,
                            "parseindex: bad index: missing location for dataset %s:%s:%d\n",
                            record.what, record.where, record.when);
    }
    record.position = leading_number<std::int64_t>(field);
    return IO_OK;
}

int get_ds_location(const io_reporter &report, index_table &index, location_mode mode,
                    const char *what, const char *where, std::int32_t when, located_datasets &found)
{
    found.clear();
    switch (mode) {
    case IO_SORT_WHAT:
        return by_what(report, index, what, where, when, found);
    case IO_SORT_WHERE:
        return by_where(report, index, where, when, found);
    case IO_FULL_SCAN:
        break;
    }
    return full_scan(report, index, what, where, when, found);
}

int find_datasets(const io_reporter &report, index_table &index, const char *what,
                  const char *where, std::int32_t when, located_datasets &found)
{
    int code = IO_OK;
    try {
        code = find_live(report, index, trimmed_name(what).c_str(), trimmed_name(where).c_str(),
                         when, found);
    } catch (const std::bad_alloc &) {
        code = malloc_failed(report, "locate_dataset");
    }
    return code == IO_OK && found.empty() ? IO_NOT_FOUND : code;
}

int update_index(const io_reporter &report, index_table &index)
{
    try {
        static_cast<void>(index.where_order()); // called only to compute the order
        return IO_OK;
    } catch (const std::bad_alloc &) {
        return malloc_failed(report, "update_index");
    }
}

int locate_dataset(const io_reporter &report, index_table &index, const char *what,
                   const char *where, std::int32_t when, located_datasets &scratch, IO_data &out)
{
    out.matches = 0;
    if (int code = find_datasets(report, index, what, where, when, scratch)) {
        return code;
    }
    auto count = static_cast<std::int64_t>(scratch.size());
    out.matches = count;
    bool fits = out.strings_size >= 2 * count && out.integers_size >= count &&
                out.offsets_size >= 2 * count;
    if (!fits) {
        out.strings_size = 2 * count;
        out.integers_size = count;
        out.offsets_size = 2 * count;
        return IO_NO_ROOM;
    }
    std::int64_t text = 0;
    std::int32_t *when_out = out.integers;
    std::int64_t *offset = out.offsets;
    for (const located_dataset &record : scratch) {
        put_string(out, text++, record.what);
        put_string(out, text++, record.where);
        *when_out++ = record.when;
        *offset++ = record.position;
        *offset++ = record.length;
    }
    report.trace("Returning %d matches", static_cast<int>(count));
    return IO_OK;
}
