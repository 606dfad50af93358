#include "io/Src/Main/element_arrays.h"

#include <cstring>
#include <new>

namespace {

std::size_t value_bytes(element_type type, std::size_t string_slot)
{
    return type == IO_STRI ? string_slot : element_word_bytes(type);
}

} // namespace

void *element_array(const IO_data &data, element_type type)
{
    switch (type) {
    case IO_STRI:
        return data.strings;
    case IO_CHAR:
        return data.chars;
    case IO_INTR:
        return data.integers;
    case IO_REAL:
        return data.reals;
    case IO_DBLE:
        return data.doubles;
    default:
        return data.logicals;
    }
}

std::int64_t element_array_size(const IO_data &data, element_type type)
{
    switch (type) {
    case IO_STRI:
        return data.strings_size;
    case IO_CHAR:
        return data.chars_size;
    case IO_INTR:
        return data.integers_size;
    case IO_REAL:
        return data.reals_size;
    case IO_DBLE:
        return data.doubles_size;
    default:
        return data.logicals_size;
    }
}

void set_element_array_size(IO_data &data, element_type type, std::int64_t size)
{
    switch (type) {
    case IO_STRI:
        data.strings_size = size;
        break;
    case IO_CHAR:
        data.chars_size = size;
        break;
    case IO_INTR:
        data.integers_size = size;
        break;
    case IO_REAL:
        data.reals_size = size;
        break;
    case IO_DBLE:
        data.doubles_size = size;
        break;
    default:
        data.logicals_size = size;
        break;
    }
}

element_counts total_counts(const data_type &type, std::int32_t count)
{
    element_counts counts = type.counts();
    for (std::int64_t &number : counts) {
        number *= count;
    }
    return counts;
}

bool arrays_hold(const IO_data &data, const element_counts &counts)
{
    for (int i = 0; i < IO_ELEMENT_TYPES; i++) {
        auto type = static_cast<element_type>(i);
        std::int64_t needed = counts[static_cast<std::size_t>(i)];
        if (needed > 0 &&
            (element_array(data, type) == nullptr || element_array_size(data, type) < needed)) {
            return false;
        }
    }
    return true;
}

void set_array_sizes(IO_data &data, const element_counts &counts)
{
    for (int i = 0; i < IO_ELEMENT_TYPES; i++) {
        auto type = static_cast<element_type>(i);
        set_element_array_size(data, type, counts[static_cast<std::size_t>(i)]);
    }
}

void blank_arrays(const IO_data &data, const element_counts &counts, std::size_t string_slot)
{
    for (int i = 0; i < IO_ELEMENT_TYPES; i++) {
        auto type = static_cast<element_type>(i);
        auto values = static_cast<std::size_t>(counts[static_cast<std::size_t>(i)]);
        if (values > 0) {
            std::memset(element_array(data, type), 0, values * value_bytes(type, string_slot));
        }
    }
}

bool element_storage::allocate(const element_counts &counts, std::size_t string_slot)
{
    for (std::size_t i = 0; i < counts.size(); i++) {
        auto type = static_cast<element_type>(i);
        std::size_t bytes = static_cast<std::size_t>(counts[i]) * value_bytes(type, string_slot);
        // At least one, so that an empty array is not taken for a missing one.
        memory_[i].reset(new (std::nothrow) char[bytes + 1]);
        if (!memory_[i]) {
            return false;
        }
    }
    data_.strings = memory_[IO_STRI].get();
    data_.chars = memory_[IO_CHAR].get();
    // The memory is aligned for any of them: it comes from operator new.
    data_.integers = reinterpret_cast<std::int32_t *>(memory_[IO_INTR].get());
    data_.reals = reinterpret_cast<float *>(memory_[IO_REAL].get());
    data_.doubles = reinterpret_cast<double *>(memory_[IO_DBLE].get());
    data_.logicals = reinterpret_cast<std::uint8_t *>(memory_[IO_LOGL].get());
    set_array_sizes(data_, counts);
    return true;
}
