// The element types of datasets, and the table of their properties.
//
// A new type gets a code at the end of the enumeration, a line in the table and an array in
// IO_data. All other code that depends on the type is a switch over element_type without a
// default, which then does not compile.
#pragma once

#include "io/Src/Main/container_format.h"
#include "io/Src/Main/io_records.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The order is the type code.
enum element_type : int { IO_STRI, IO_CHAR, IO_INTR, IO_REAL, IO_DBLE, IO_LOGL };

/// How many types there are.
inline constexpr int IO_ELEMENT_TYPES = IO_LOGL + 1;

/// The properties of an element type.
struct element_traits
{
    element_type type;
    const char *name;       ///< in data type strings: four characters
    const char *array_name; ///< of its array, in messages

    /// Bytes of one element in a file and in a client's array, which are reversed
    /// for the other byte order; 1 for strings and characters.
    std::size_t word_bytes;

    /// The fewest bytes that one element takes in a formatted file.
    std::int64_t formatted_bytes;

    bool has_length;  ///< its elements are texts, as long as the data type says
    bool has_blocks;  ///< arrays of it are compressed
    bool is_logical;  ///< any value except 0 counts as 1
    char gzip_letter; ///< its letter for the compressor

    /// The types that convert_data() can turn it into, a bit for each code.
    unsigned conversions;

    std::int64_t IO_data::*capacity; ///< the size of its array, in values
};

/// The bits of some types, for element_traits::conversions.
template <typename... Types>
constexpr unsigned element_bits(Types... types)
{
    return ((1U << types) | ...);
}

// The line of a string may be shorter than its type says, and so may that of a
// logical.
inline constexpr auto element_table = std::to_array<element_traits>({
    {.type = IO_STRI,
     .name = "STRI",
     .array_name = "string",
     .word_bytes = 1,
     .formatted_bytes = 1,
     .has_length = true,
     .has_blocks = false,
     .is_logical = false,
     .gzip_letter = 'c',
     .conversions = element_bits(IO_STRI),
     .capacity = &IO_data::strings_size},
    {.type = IO_CHAR,
     .name = "CHAR",
     .array_name = "char",
     .word_bytes = 1,
     .formatted_bytes = 1,
     .has_length = false,
     .has_blocks = true,
     .is_logical = false,
     .gzip_letter = 'c',
     .conversions = element_bits(IO_CHAR),
     .capacity = &IO_data::chars_size},
    {.type = IO_INTR,
     .name = "INTR",
     .array_name = "intr",
     .word_bytes = 4,
     .formatted_bytes = IO_INTEGER_WIDTH,
     .has_length = false,
     .has_blocks = true,
     .is_logical = false,
     .gzip_letter = 'i',
     .conversions = element_bits(IO_INTR, IO_REAL, IO_DBLE, IO_LOGL),
     .capacity = &IO_data::integers_size},
    {.type = IO_REAL,
     .name = "REAL",
     .array_name = "real",
     .word_bytes = 4,
     .formatted_bytes = IO_REAL_WIDTH,
     .has_length = false,
     .has_blocks = true,
     .is_logical = false,
     .gzip_letter = 'r',
     .conversions = element_bits(IO_INTR, IO_REAL, IO_DBLE),
     .capacity = &IO_data::reals_size},
    {.type = IO_DBLE,
     .name = "DBLE",
     .array_name = "dble",
     .word_bytes = 8,
     .formatted_bytes = IO_REAL_WIDTH,
     .has_length = false,
     .has_blocks = true,
     .is_logical = false,
     .gzip_letter = 'd',
     .conversions = element_bits(IO_INTR, IO_REAL, IO_DBLE),
     .capacity = &IO_data::doubles_size},
    {.type = IO_LOGL,
     .name = "LOGL",
     .array_name = "logl",
     .word_bytes = 1,
     .formatted_bytes = 2,
     .has_length = false,
     .has_blocks = true,
     .is_logical = true,
     .gzip_letter = 'c',
     .conversions = element_bits(IO_INTR, IO_LOGL),
     .capacity = &IO_data::logicals_size},
});
static_assert(element_table.size() == IO_ELEMENT_TYPES);
static_assert(
    [] {
        for (std::size_t code = 0; code < element_table.size(); code++) {
            if (static_cast<std::size_t>(element_table[code].type) != code) {
                return false;
            }
        }
        return true;
    }(),
    "the table is in the order of the codes");

/// The properties of a type.
[[nodiscard]] constexpr const element_traits &element_of(element_type type)
{
    return element_table[static_cast<std::size_t>(type)];
}

/// Parts of the table by themselves.
[[nodiscard]] constexpr const char *element_type_name(element_type type)
{
    return element_of(type).name;
}

[[nodiscard]] constexpr std::size_t element_word_bytes(element_type type)
{
    return element_of(type).word_bytes;
}

/// Whether convert_data() can turn one type into the other.
[[nodiscard]] constexpr bool element_converts(element_type from, element_type to)
{
    return (element_of(from).conversions & element_bits(to)) != 0;
}
