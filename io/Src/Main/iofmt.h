// Format codes: the two characters that say how a dataset is written.
#pragma once

#include "io/Src/Main/io_report.h"

#include <optional>
#include <string_view>
#include <vector>

/// Letter F: formatted; U, u, L, l: binary; the other letters mark deleted datasets.
struct format_code
{
    char letter = 'F';
    char second = ' '; ///< the compression level as a digit, or anything else

    /// Whether it is text, not binary.
    bool formatted() const { return letter == 'F'; }

    /// Whether lengths have 8 bytes, not 4.
    bool wide() const { return letter == 'L' || letter == 'l'; }

    /// Whether binary numbers have the other byte order.
    bool swapped() const { return letter != 'F' && letter != 'l' && letter != 'u'; }

    /// Whether the second character is a level of compression, and which.
    bool has_digit() const { return second >= '0' && second <= '9'; }
    [[nodiscard]] int level() const { return second - '0'; }

    /// One of U, u, L, l.
    bool binary() const;
    /// Whether it is the code of a dataset, not the mark of a deleted one.
    bool live() const { return formatted() || binary(); }
    bool deleted() const;
    /// Whether arrays may be compressed.
    bool compressed() const { return binary() && has_digit(); }

    bool operator==(const format_code &) const = default;
};

/// The code of text.
inline constexpr format_code IO_FORMATTED = {'F', ' '};

/// One of the nine letters "FDdUuLlXx".
bool iofmt_is_letter(char letter);

/// The code that two characters of a client or of `ZOT_FORMAT` request. If there is only a
/// letter, the second character is a space. Any other first letter counts as F.
format_code iofmt_parse(std::string_view text);

/// Turns U into u, L into l, d into D and X into x; 15 for another letter.
[[nodiscard]] int iofmt_make_native(const io_reporter &report, format_code &format);

/// The format of a new dataset: that of `ZOT_FORMAT` if set, otherwise the client's (empty:
/// none), otherwise U5; always in the native byte order. For `data_bytes` of 0x60000001 or
/// more, U becomes L.
[[nodiscard]] int iofmt_choose(const io_reporter &report, io_env &env, std::string_view asked,
                               std::int64_t data_bytes, format_code &format);

/// The mark that a deletion writes over a live code; none for any other code.
std::optional<format_code> iofmt_deleted_mark(format_code live);

/// The codes that a deletion mark may have replaced. A mark of this library has exactly one;
/// for an older mark these are the candidates in the order in which to try them.
std::vector<format_code> iofmt_restore(format_code mark);
