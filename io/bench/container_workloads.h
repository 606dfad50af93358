// What the measurements of the def/res library do, once and without a clock:
// velbench and the comparison with other libraries time them. All work on real
// files; each returns the library's code.
#pragma once

#include "io/Src/Main/io_session.h"

#include <cstdint>
#include <string>
#include <vector>

namespace container_workloads {

/// `bytes` of doubles as a solver writes them: smooth fields with noise in the
/// last digits, always the same. They compress to a good half.
std::vector<double> sample_doubles(std::size_t bytes);

/// `bytes` of node numbers, as in a connectivity table.
std::vector<std::int32_t> sample_integers(std::size_t bytes);

/// One dataset of all values into a new file, opened and closed; format as in
/// IO_header, e.g. "u" or "u5".
int write_doubles(const std::string &file, const char *format, const std::vector<double> &values);
int write_integers(const std::string &file, const char *format,
                   const std::vector<std::int32_t> &values);

/// The same dataset back; `values` has its size already.
int read_doubles(const std::string &file, std::vector<double> &values);
int read_integers(const std::string &file, std::vector<std::int32_t> &values);

/// `count` datasets of four integers each into a new file.
int append_small(const std::string &file, int count);

/// WHAT of the i-th of these; WHERE is "ZONE 1", WHEN 0.
std::string small_name(int number);

/// Opens a file and closes it.
int open_and_close(const std::string &file);

/// A file of append_small(), kept open.
class small_datasets
{
public:
    explicit small_datasets(const std::string &file);
    ~small_datasets();
    small_datasets(const small_datasets &) = delete;
    small_datasets &operator=(const small_datasets &) = delete;

    int code() const { return code_; } ///< of the opening

    /// Locates each of these by its full name; 17 if one is not found.
    int locate(const std::vector<std::uint32_t> &numbers);

    /// All whose WHAT matches a pattern, by a scan of the whole index; their number.
    std::int64_t scan(const char *pattern);

private:
    io_session session_;
    std::vector<std::string> names_;
    int code_;
};

} // namespace container_workloads
