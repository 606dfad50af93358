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

    /// Text rather than binary.
    bool formatted() const { return letter == 'F'; }

    /// Lengths of 8 bytes rather than 4.
    bool wide() const { return letter == 'L' || letter == 'l'; }

    /// Binary numbers of the other byte order.
    bool swapped() const { return letter != 'F' && letter != 'l' && letter != 'u'; }

    /// Whether the second character is a level of compression, and which.
    bool has_digit() const { return second >= '0' && second <= '9'; }
    [[nodiscard]] int level() const { return second - '0'; }

    /// One of U, u, L, l.
    bool binary() const;
    /// Written as a dataset, not as the mark of a deleted one.
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

/// The code that two characters of a client or of `ZOT_FORMAT` ask for: one
/// letter gets a blank, another first letter is F.
format_code iofmt_parse(std::string_view text);

/// Turns U into u, L into l, d into D and X into x; 15 for another letter.
[[nodiscard]] int iofmt_make_native(const io_reporter &report, format_code &format);

/// What a new dataset is written in: that of `ZOT_FORMAT` if set, else the
/// client's (empty: none), else U5; made native. `data_bytes` of 0x60000001
/// and more turn U into L.
[[nodiscard]] int iofmt_choose(const io_reporter &report, io_env &env, std::string_view asked,
                               std::int64_t data_bytes, format_code &format);

/// What a deletion writes over a live code; none for any other.
std::optional<format_code> iofmt_deleted_mark(format_code live);

/// The codes that a deleted mark may replace: exactly one for the marks that
/// this library writes, the candidates in the order to be tried for older ones.
std::vector<format_code> iofmt_restore(format_code mark);
