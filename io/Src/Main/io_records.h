// The two records of every request to the library, and objects with the memory for them.
//
// All memory is the client's. Fields that a request does not use may be null
// or 0.
#pragma once

#include "io/Src/Main/container_format.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Bytes of a string of 80 characters in a client's array, NUL included.
inline constexpr std::int64_t IO_STRING_SLOT = static_cast<std::int64_t>(IO_STRING_LENGTH) + 1;

/// Describes a dataset. Requests that read a header write into the same fields; then the
/// texts need the space that io_header_storage has.
struct IO_header
{
    char *what = nullptr;
    char *where = nullptr;
    std::int32_t *when = nullptr; ///< negative: every WHEN

    std::int32_t *attribute_count = nullptr; ///< may be null: none
    char *attributes = nullptr;              ///< slots of IO_STRING_SLOT bytes
    std::int32_t attributes_size = 0;        ///< number of slots, for reading

    std::int32_t *count = nullptr; ///< elements (NUMBER)
    char *type = nullptr;          ///< data type string; "" for reading: as stored
    std::int32_t *blockfactor = nullptr;

    /// Two characters. For writing, null or "" means the default. For reading, it gets the
    /// code (the one before a deletion), unless it is null.
    char *format = nullptr;
};

/// Buffers and their capacities, counted in values. No request writes beyond
/// what the fields state.
///
/// A read that finds an array missing or too small returns 14 and sets the size
/// fields of those arrays to the numbers of values that it needs. A locate that
/// finds one too small returns 14 and sets the sizes of all three that it fills.
/// No other request changes a size.
struct IO_data
{
    const char *filename = nullptr;
    std::int32_t filename_length = 0; ///< 0: up to the NUL

    /// For the plain text file: "r" (also null), "w" empties it, "a" adds to it.
    const char *access = nullptr;

    std::int64_t *offsets = nullptr; ///< pairs of dataset position and length
    std::int64_t offsets_size = 0;

    char *strings = nullptr; ///< slots of `string_slot` bytes
    std::int64_t strings_size = 0;
    char *chars = nullptr;
    std::int64_t chars_size = 0;
    std::int32_t *integers = nullptr;
    std::int64_t integers_size = 0;
    float *reals = nullptr;
    std::int64_t reals_size = 0;
    double *doubles = nullptr;
    std::int64_t doubles_size = 0;
    std::uint8_t *logicals = nullptr; ///< 0 or 1 each
    std::int64_t logicals_size = 0;

    /// Bytes of a slot in `strings`, the NUL included; 0 or less means
    /// IO_STRING_SLOT. The client decides how wide its slots are, for data of any type; a
    /// longer string is cut.
    std::int64_t string_slot = 0;

    std::int64_t matches = 0; ///< set by a locate: the datasets that it found
};

/// Puts a text into a field of fixed size, and cuts it if it is too long.
template <std::size_t size>
void io_set_text(char (&field)[size], std::string_view text)
{
    field[text.copy(field, size - 1)] = '\0';
}

/// Memory for everything that an IO_header points to. Set its texts with io_set_text().
struct io_header_storage
{
    static constexpr std::int32_t attributes_max = 16;

    char what[IO_STRING_SLOT] = {};
    char where[IO_STRING_SLOT] = {};
    std::int32_t when = -1;
    std::int32_t attribute_count = 0;
    char attributes[attributes_max][IO_STRING_SLOT] = {};
    std::int32_t count = 0;
    char type[IO_TYPE_RECORD_MAX + 1] = {};
    std::int32_t blockfactor = 1;
    char format[3] = {};

    /// Points into this object, and is valid as long as the object.
    IO_header header()
    {
        return {what,           where,  &when, &attribute_count, attributes[0],
                attributes_max, &count, type,  &blockfactor,     format};
    }
};
