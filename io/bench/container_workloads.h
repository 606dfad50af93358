// The work that measurements of the container library time, without a clock:
// velbench and the comparison with other libraries use it. All functions use real
// files and return the library's code.
#pragma once

#include "io/Src/Main/io_session.h"

#include <cstdint>
#include <string>
#include <vector>

namespace container_workloads {

/// `bytes` of doubles like those of a solver: smooth fields with noise in the last
/// digits, always the same. They compress to slightly more than half.
std::vector<double> sample_doubles(std::size_t bytes);

/// `bytes` of node numbers, as in a connectivity table.
std::vector<std::int32_t> sample_integers(std::size_t bytes);

/// Opens a new file, writes all values as one dataset, and closes it. `format` is
/// that of IO_header, such as "u" or "u5".
int write_doubles(const std::string &file, const char *format, const std::vector<double> &values);
int write_integers(const std::string &file, const char *format,
                   const std::vector<std::int32_t> &values);

/// Reads the same dataset; `values` already has its size.
int read_doubles(const std::string &file, std::vector<double> &values);
int read_integers(const std::string &file, std::vector<std::int32_t> &values);

/// Writes `count` datasets of four integers each into a new file.
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

    int code() const { return code_; } ///< the code of the opening

    /// Locates each of these by its full name; 17 if one is missing.
    int locate(const std::vector<std::uint32_t> &numbers);

    /// The number of datasets whose WHAT matches a pattern, by a scan of the whole
    /// index.
    std::int64_t scan(const char *pattern);

private:
    io_session session_;
    std::vector<std::string> names_;
    int code_;
};

} // namespace container_workloads
