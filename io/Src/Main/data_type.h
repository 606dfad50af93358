// The data type string of a dataset: "REAL", "STRI:40", "STRC{INTR:2 STRI:1:8}".
#pragma once

#include "io/Src/Main/container_format.h"
#include "io/Src/Main/io_report.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

/// The order is the type code.
enum element_type : int { IO_STRI, IO_CHAR, IO_INTR, IO_REAL, IO_DBLE, IO_LOGL, IO_ELEMENT_TYPES };

const char *element_type_name(element_type type);

/// Bytes of one element in a file and in a client's array; 1 for strings and
/// characters.
std::size_t element_word_bytes(element_type type);

struct type_entry
{
    element_type type = IO_STRI;

    /// Characters of the one string for STRI in a structure; elements for other types.
    /// 1 for a single type.
    std::int32_t count = 1;

    /// Characters of a string: of STRI only.
    std::int32_t length = 0;

    /// Values that a client's array holds for it.
    std::int64_t values() const { return type == IO_STRI ? 1 : count; }
    std::int64_t bytes() const;
};

/// How many values of each type, by code.
using element_counts = std::array<std::int64_t, IO_ELEMENT_TYPES>;

struct data_type
{
    bool structure = false;
    std::vector<type_entry> entries; ///< one of a single type, 1 to 41 of a structure

    element_type single() const { return entries.front().type; }

    /// Bytes of one element (of a structure: one record) in a binary file.
    std::int64_t bytes() const;

    /// The fewest bytes that one element takes in a formatted file.
    std::int64_t formatted_bytes() const;

    /// Values of each type in one element.
    element_counts counts() const;

    /// Bytes of a slot that holds the longest string whole, its NUL included.
    std::size_t string_slot() const;

    bool operator==(const data_type &other) const;
};

/// 12 with a message for what is no type, 14 for a structure of too many entries.
int parseStructure(const io_reporter &report, std::string_view text, data_type &type);
