// The arrays of an IO_data, by element type.
#pragma once

#include "io/Src/Main/data_type.h"
#include "io/Src/Main/io_records.h"

#include <memory>

/// The array for a type and its capacity in values.
void *element_array(const IO_data &data, element_type type);
std::int64_t element_array_size(const IO_data &data, element_type type);
void set_element_array_size(IO_data &data, element_type type, std::int64_t size);

/// Values of each type in `count` elements; the product is known to fit.
element_counts total_counts(const data_type &type, std::int32_t count);

/// Whether every array that is needed is there and large enough.
bool arrays_hold(const IO_data &data, const element_counts &counts);

/// Sets the sizes of all arrays that are needed.
void set_array_sizes(IO_data &data, const element_counts &counts);

/// Makes the arrays empty to look at: zero bytes throughout.
void blank_arrays(const IO_data &data, const element_counts &counts, std::size_t string_slot);

/// Arrays of its own.
class element_storage
{
public:
    /// False if there is no memory.
    bool allocate(const element_counts &counts, std::size_t string_slot);

    IO_data &data() { return data_; }

private:
    std::array<std::unique_ptr<char[]>, IO_ELEMENT_TYPES> memory_; ///< owned
    IO_data data_;
};
