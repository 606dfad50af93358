// Goes through the datasets of a container by their lengths, without an index.
#pragma once

#include "io/Src/Main/dataset_header.h"
#include "io/Src/Main/open_file.h"

/// What a scan can find.
enum class scan_kind {
    dataset, ///< live, both lengths are equal, the header was read
    deleted, ///< marked, both lengths are equal; the header was read if possible
    index,   ///< a stored index
};

/// A dataset or an index, as the scan has read it.
struct scanned_dataset
{
    scan_kind kind = scan_kind::dataset;
    format_code format;        ///< that of before a deletion
    std::int64_t position = 0; ///< of the format code
    std::int64_t start = 0;    ///< of the start word
    std::int64_t length = 0;
    std::int64_t end = 0; ///< after the second length
    bool has_header = false;
    dataset_header header;
};

/// Why a scan ended.
enum class scan_end {
    running,
    end_of_file, ///< after a complete dataset: no damage
    crash,       ///< at "*CRASH"
    interrupted, ///< at a length of zero
    cut,         ///< the file ends inside a dataset or an index
    damaged,     ///< the bytes are not a dataset, or contradict each other
};

/// A scan of an open file, whose stream it moves.
class dataset_scan
{
public:
    /// Of a file of `size` bytes, from its first dataset on.
    dataset_scan(open_file &file, std::int64_t size);

    /// Continues to the next dataset or index. False at the end of the scan; if the reason is
    /// a failure, it has been reported.
    bool next();

    /// What next() found last.
    const scanned_dataset &item() const { return item_; }
    /// Why the scan ended; `running` while it has not.
    scan_end end() const { return end_; }

    /// Continues after damage or a cut, at the next place where a dataset or an index seems
    /// to begin; false if there is none.
    bool resume();

    /// Where the scan ended.
    std::int64_t position() const { return position_; }

    /// 0, also for an end after a crash; 20 for damage, 10 for a failed read.
    [[nodiscard]] int code() const { return code_; }

private:
    bool stop(scan_end end, int code = IO_OK);
    bool begins_at(std::int64_t position, std::int64_t word);
    std::int64_t find_beginning(std::int64_t from);
    bool read_format();
    bool read_length();
    bool length_of_zero();
    bool choose_old_style(const std::vector<format_code> &candidates);
    bool agrees(format_code format, std::int64_t &again);
    enum class beginning { other, cut, header };
    beginning begins_as(format_code format);
    bool read_word();
    bool read_dataset();
    bool skip_deleted();
    bool skip_index();
    bool cut_short();
    bool damaged();
    std::int64_t length_field_end() const;

    open_file &file_;
    zot_io &io_;
    std::int64_t size_;
    std::int64_t position_;
    format_code mark_; ///< as it is in the file
    scanned_dataset item_;
    scan_end end_ = scan_end::running;
    int code_ = IO_OK;
};
