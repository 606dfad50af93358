// The arrays of an IO_data, by element type.
#pragma once

#include "io/Src/Main/data_type.h"
#include "io/Src/Main/io_records.h"

#include <memory>
#include <string_view>

/// The array for a type; the client's, may be null.
void *element_array(const IO_data &data, element_type type);
/// Makes `array`, which is aligned for the type, the array for it.
void set_element_array(IO_data &data, element_type type, void *array);

/// The capacity of the array for a type, in values.
inline std::int64_t element_array_size(const IO_data &data, element_type type)
{
    return data.*element_of(type).capacity;
}
inline void set_element_array_size(IO_data &data, element_type type, std::int64_t size)
{
    data.*element_of(type).capacity = size;
}

/// Bytes of a slot in the string array, as the client states; the default is IO_STRING_SLOT.
std::size_t string_slot_bytes(const IO_data &data);

/// A slot of the string array.
char *string_slot(const IO_data &data, std::int64_t index);

/// Puts a text into a slot, cut to the size of the slot and without white space at its end.
void put_string(const IO_data &data, std::int64_t index, std::string_view text);

/// The text in a slot, at most `most` characters of it.
std::string_view get_string(const IO_data &data, std::int64_t index, std::size_t most);

/// Values of each type in `count` elements; the product is known to fit.
element_counts total_counts(const data_type &type, std::int32_t count);

/// Whether every array that is needed exists and is large enough.
bool arrays_hold(const IO_data &data, const element_counts &counts);

/// Sets the size of each needed array that is missing or too small.
void report_array_sizes(IO_data &data, const element_counts &counts);

/// Sets the first `counts` values of each array to zero bytes.
void blank_arrays(const IO_data &data, const element_counts &counts);

/// Arrays of its own.
class element_storage
{
public:
    /// False if there is no memory; bytes() says how much was asked for. States
    /// `string_slot` in the record.
    bool allocate(const element_counts &counts, std::size_t string_slot);

    /// The record that names the arrays; they belong to this object.
    IO_data &data() { return data_; }
    /// What the last allocation asked for.
    std::int64_t bytes() const { return bytes_; }

private:
    std::array<std::unique_ptr<char[]>, IO_ELEMENT_TYPES> memory_; ///< owned
    IO_data data_;
    std::int64_t bytes_ = 0;
};
