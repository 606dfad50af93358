// The slots of the index in memory, and the orders by which it is searched.
#include "io/Src/Main/index_table.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>

namespace {

constexpr std::int32_t no_more = std::numeric_limits<std::int32_t>::max() - 2 * IO_INDEX_GROWTH;
constexpr std::size_t key_start = 2; // after the status and its ESC

/// Positions of the lines in the order of their keys; key(slot) is a text.
template <typename Key>
std::vector<std::int32_t> ordered(std::int32_t count, Key key)
{
    struct item
    {
        const char *key;
        std::int32_t slot;
    };
    std::vector<item> items(static_cast<std::size_t>(count));
    for (std::int32_t slot = 0; slot < count; slot++) {
        items[static_cast<std::size_t>(slot)] = {key(slot), slot};
    }
    auto less = [](const item &a, const item &b) { return std::strcmp(a.key, b.key) < 0; };
    if (!std::is_sorted(items.begin(), items.end(), less)) {
        std::sort(items.begin(), items.end(), less);
    }
    std::vector<std::int32_t> slots(items.size());
    std::transform(items.begin(), items.end(), slots.begin(),
                   [](const item &entry) { return entry.slot; });
    return slots;
}

/// Length of the WHAT and WHERE of a line, including the ESC after each.
std::size_t name_length(const char *line)
{
    const char *where = std::strchr(line + key_start, IO_ESC);
    const char *end = where == nullptr ? nullptr : std::strchr(where + 1, IO_ESC);
    return end == nullptr ? std::strlen(line + key_start)
                          : static_cast<std::size_t>(end + 1 - (line + key_start));
}

std::size_t hash_name(const char *text, std::size_t length)
{
    constexpr std::uint64_t factor = 0x9e3779b97f4a7c15U;
    std::uint64_t hash = length * factor;
    while (length > 0) {
        std::uint64_t part = 0;
        std::size_t bytes = std::min(length, sizeof part);
        std::memcpy(&part, text, bytes);
        hash = (hash ^ part) * factor;
        hash ^= hash >> 29;
        text += bytes;
        length -= bytes;
    }
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

} // namespace

const char *index_line_where(const char *line)
{
    const char *end = std::strchr(line + key_start, IO_ESC);
    return end == nullptr ? line + std::strlen(line) : end + 1;
}

bool index_table::reserve(std::int32_t lines)
{
    if (lines > no_more) {
        return false;
    }
    std::int32_t wanted = lines + 1;
    if (wanted <= allocated_) {
        return true;
    }
    zeroed_ = slots_ == nullptr;
    void *memory = zeroed_ ? std::calloc(static_cast<std::size_t>(wanted), IO_INDEX_SLOT)
                           : std::realloc(slots_.get(), offset(wanted));
    if (memory == nullptr) {
        return false;
    }
    // realloc freed the old block, so it must not be freed again.
    static_cast<void>(slots_.release());
    slots_.reset(static_cast<char *>(memory));
    allocated_ = wanted;
    return true;
}

void index_table::open_slots(std::int32_t from, std::int32_t capacity)
{
    // Memory that is NUL already is not written, so the system need not provide
    // it yet.
    for (std::int32_t slot = from; !zeroed_ && slot < capacity; slot++) {
        slots_.get()[offset(slot)] = '\0';
    }
    slots_.get()[offset(capacity)] = IO_ESC;
    capacity_ = capacity;
}

bool index_table::grow()
{
    std::int32_t capacity = count_ + IO_INDEX_GROWTH;
    // The memory doubles, so that a million insertions copy little. The usable
    // part grows in steps.
    std::int32_t room = std::min(no_more, std::max(capacity, count_ + count_ / 2));
    if (count_ > no_more - IO_INDEX_GROWTH || (!reserve(room) && !reserve(capacity))) {
        return false;
    }
    open_slots(count_, capacity);
    return true;
}

int index_table::insert_index(const io_reporter &report, std::string_view line)
{
    if (line.size() >= IO_INDEX_SLOT) {
        return report.error(IO_NO_ROOM, "insert_index: index line of %d characters is too long\n",
                            static_cast<int>(line.size()));
    }
    bool full = count_ == capacity_; // the sentinel is reached, or no table exists yet
    if (full && !grow()) {
        return report.zotsystemErr(IO_NO_ROOM, "insert_index: (malloc failed) syserr:");
    }
    char *slot = slots_.get() + offset(count_);
    std::memcpy(slot, line.data(), line.size());
    slot[line.size()] = '\0';
    count_++;
    if (sorted_ || where_valid_) {
        report.trace("insert_index: Marking index as unsorted");
    }
    sorted_ = false;
    where_valid_ = false;
    names_.clear();
    return IO_OK;
}

void index_table::sort_by_what()
{
    if (sorted_) {
        return;
    }
    std::vector<std::int32_t> order =
        ordered(count_, [this](std::int32_t slot) { return line(slot) + key_start; });
    sorted_ = true;
    where_valid_ = false;
    names_.clear();
    if (std::is_sorted(order.begin(), order.end())) {
        return;
    }
    // Follows every cycle of the permutation once, with one slot kept aside.
    char hand[IO_INDEX_SLOT];
    for (std::int32_t start = 0; start < count_; start++) {
        auto from = order[static_cast<std::size_t>(start)];
        if (from < 0 || from == start) {
            continue;
        }
        std::memcpy(hand, line(start), IO_INDEX_SLOT);
        std::int32_t to = start;
        while (from != start) {
            std::memcpy(slots_.get() + offset(to), line(from), IO_INDEX_SLOT);
            order[static_cast<std::size_t>(to)] = -1;
            to = from;
            from = order[static_cast<std::size_t>(to)];
        }
        std::memcpy(slots_.get() + offset(to), hand, IO_INDEX_SLOT);
        order[static_cast<std::size_t>(to)] = -1;
    }
}

const std::vector<std::int32_t> &index_table::where_order()
{
    if (!where_valid_) {
        where_ =
            ordered(count_, [this](std::int32_t slot) { return index_line_where(line(slot)); });
        where_valid_ = true;
    }
    return where_;
}

void index_table::make_name_table()
{
    std::size_t size = 16;
    while (size < 2 * static_cast<std::size_t>(count_)) {
        size *= 2;
    }
    names_.assign(size, -1);
    const char *last = nullptr;
    std::size_t last_length = 0;
    for (std::int32_t slot = 0; slot < count_; slot++) {
        const char *name = line(slot) + key_start;
        std::size_t length = name_length(line(slot));
        if (length == last_length && std::memcmp(name, last, length) == 0) {
            continue;
        }
        std::size_t at = hash_name(name, length) & (size - 1);
        while (names_[at] >= 0) {
            at = (at + 1) & (size - 1);
        }
        names_[at] = slot;
        last = name;
        last_length = length;
    }
}

std::int32_t index_table::first_of_name(std::string_view what, std::string_view where)
{
    char key[IO_INDEX_SLOT];
    std::size_t length = what.size() + where.size() + 2;
    if (length > sizeof key) {
        return count_;
    }
    if (names_.empty()) {
        make_name_table();
    }
    std::memcpy(key, what.data(), what.size());
    key[what.size()] = IO_ESC;
    std::memcpy(key + what.size() + 1, where.data(), where.size());
    key[length - 1] = IO_ESC;
    std::size_t at = hash_name(key, length) & (names_.size() - 1);
    for (; names_[at] >= 0; at = (at + 1) & (names_.size() - 1)) {
        if (std::strncmp(line(names_[at]) + key_start, key, length) == 0) {
            return names_[at];
        }
    }
    return count_;
}

void index_table::clear()
{
    *this = index_table();
}
