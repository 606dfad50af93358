// The data type string of a dataset: "REAL", "STRI:40", "STRC{INTR:2 STRI:1:8}".
#pragma once

#include "io/Src/Main/element_type.h"
#include "io/Src/Main/io_report.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

/// One item of a data type.
struct type_entry
{
    element_type type = IO_STRI;

    /// Characters of the one string for STRI in a structure; elements for other types.
    /// 1 for a single type.
    std::int32_t count = 1;

    /// Characters of a string: of STRI only.
    std::int32_t length = 0;

    /// Values that a client's array holds for it.
    std::int64_t values() const { return element_of(type).has_length ? 1 : count; }
    /// Bytes of the item in a binary file.
    std::int64_t bytes() const;
};

/// How many values of each type, by code.
using element_counts = std::array<std::int64_t, IO_ELEMENT_TYPES>;

/// The parts of a data type string.
struct data_type
{
    bool structure = false;
    std::vector<type_entry> entries; ///< one for a single type, 1 to 41 for a structure

    /// The element type of a single type.
    element_type single() const { return entries.front().type; }

    /// Bytes of one element (of a structure: one record) in a binary file.
    std::int64_t bytes() const;

    /// The fewest bytes that one element takes in a formatted file.
    std::int64_t formatted_bytes() const;

    /// Values of each type in one element.
    element_counts counts() const;

    /// Bytes of a slot for the longest string, its NUL included.
    std::size_t string_slot() const;

    bool operator==(const data_type &other) const;
};

/// 12 with a message if the text is not a type, 14 if a structure has too many entries.
[[nodiscard]] int parseStructure(const io_reporter &report, std::string_view text, data_type &type);
