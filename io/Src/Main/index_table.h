// The index of an open container in memory: one line for each dataset, in the form of the
// file.
//
//     slot 0      Y ESC WHAT ESC WHERE ESC WHEN ESC length ESC position NUL …
//     slot 1      …
//     slot count  NUL …                        free
//     …
//     slot cap    ESC …                        the sentinel: the table ends here
//
// Each slot has 256 bytes. The lines are in the order of the file until a
// lookup sorts them; any insertion makes the table unsorted again.
#pragma once

#include "io/Src/Main/container_format.h"
#include "io/Src/Main/io_report.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

/// The lines of one index. It owns their memory; a new one is empty.
class index_table
{
public:
    /// Lines in the table, deleted ones included.
    std::int32_t count() const { return count_; }

    /// Usable slots; the sentinel comes after them.
    std::int32_t capacity() const { return capacity_; }
    /// Whether the order of sort_by_what() is still correct.
    bool sorted() const { return sorted_; }

    /// NUL-terminated, in its slot of 256 bytes; valid until the next insertion
    /// or sort.
    const char *line(std::int32_t slot) const { return slots_.get() + offset(slot); }

    /// 'Y' live, 'N' deleted.
    char status(std::int32_t slot) const { return *line(slot); }
    /// Marks the line, only in memory.
    void set_status(std::int32_t slot, char status) { slots_.get()[offset(slot)] = status; }

    /// Adds the line after the others. 14 if there is no memory, or the line
    /// does not fit its slot.
    [[nodiscard]] int insert_index(const io_reporter &report, std::string_view line);

    /// Allocates memory for `lines` lines at once; false if there is none.
    bool reserve(std::int32_t lines);

    /// Orders the lines by their bytes from the third on: WHAT, WHERE, then the
    /// text of WHEN and what follows. Throws bad_alloc.
    void sort_by_what();

    /// The slots ordered by their bytes from after the second ESC: WHERE, then
    /// the text of WHEN. Made at the first call after an insertion or a sort;
    /// valid until the next. Throws bad_alloc.
    const std::vector<std::int32_t> &where_order();

    /// The first slot whose WHAT and WHERE are these, or count(); the table has
    /// been sorted by sort_by_what(), so that the others follow. Made at the first call
    /// after an insertion or a sort. Throws bad_alloc.
    std::int32_t first_of_name(std::string_view what, std::string_view where);

    /// Frees everything; the table is then empty.
    void clear();

private:
    struct release
    {
        void operator()(char *memory) const { std::free(memory); }
    };

    static std::size_t offset(std::int32_t slot)
    {
        return static_cast<std::size_t>(slot) * IO_INDEX_SLOT;
    }
    bool grow();
    void make_name_table();
    void open_slots(std::int32_t from, std::int32_t capacity);

    std::unique_ptr<char[], release> slots_; ///< owned; from calloc or realloc
    bool zeroed_ = false;                    ///< from calloc: unused slots are NUL already
    std::int32_t allocated_ = 0;             ///< slots in memory
    std::int32_t capacity_ = 0;
    std::int32_t count_ = 0;
    bool sorted_ = false;
    bool where_valid_ = false;
    std::vector<std::int32_t> where_;

    /// Hash of the names to their first slots, open addressing; −1 is free.
    std::vector<std::int32_t> names_;
};

/// The text of a line after its second ESC; the line is one that an
/// index_table holds.
const char *index_line_where(const char *line);
