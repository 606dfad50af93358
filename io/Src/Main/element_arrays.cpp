// Finds, measures and clears the arrays of an IO_data; allocates a set of them.
#include "io/Src/Main/element_arrays.h"

#include "io/Src/Main/zot_primitives.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

std::size_t value_bytes(element_type type, std::size_t string_slot)
{
    const element_traits &element = element_of(type);
    return element.has_length ? string_slot : element.word_bytes;
}

/// Whether the array for a type exists and is large enough, or is not needed.
bool array_holds(const IO_data &data, element_type type, const element_counts &counts)
{
    std::int64_t needed = counts[static_cast<std::size_t>(type)];
    return needed <= 0 ||
           (element_array(data, type) != nullptr && element_array_size(data, type) >= needed);
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
    case IO_LOGL:
        return data.logicals;
    }
    return nullptr;
}

void set_element_array(IO_data &data, element_type type, void *array)
{
    switch (type) {
    case IO_STRI:
        data.strings = static_cast<char *>(array);
        break;
    case IO_CHAR:
        data.chars = static_cast<char *>(array);
        break;
    case IO_INTR:
        data.integers = static_cast<std::int32_t *>(array);
        break;
    case IO_REAL:
        data.reals = static_cast<float *>(array);
        break;
    case IO_DBLE:
        data.doubles = static_cast<double *>(array);
        break;
    case IO_LOGL:
        data.logicals = static_cast<std::uint8_t *>(array);
        break;
    }
}

std::size_t string_slot_bytes(const IO_data &data)
{
    return static_cast<std::size_t>(data.string_slot > 0 ? data.string_slot : IO_STRING_SLOT);
}

char *string_slot(const IO_data &data, std::int64_t index)
{
    return data.strings + static_cast<std::size_t>(index) * string_slot_bytes(data);
}

void put_string(const IO_data &data, std::int64_t index, std::string_view text)
{
    char *slot = string_slot(data, index);
    text = zottrimEnd(text.substr(0, string_slot_bytes(data) - 1));
    slot[text.copy(slot, text.size())] = '\0';
}

std::string_view get_string(const IO_data &data, std::int64_t index, std::size_t most)
{
    const char *slot = string_slot(data, index);
    return {slot, strnlen(slot, std::min(most, string_slot_bytes(data) - 1))};
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
        if (!array_holds(data, static_cast<element_type>(i), counts)) {
            return false;
        }
    }
    return true;
}

void report_array_sizes(IO_data &data, const element_counts &counts)
{
    for (int i = 0; i < IO_ELEMENT_TYPES; i++) {
        auto type = static_cast<element_type>(i);
        if (!array_holds(data, type, counts)) {
            set_element_array_size(data, type, counts[static_cast<std::size_t>(i)]);
        }
    }
}

void blank_arrays(const IO_data &data, const element_counts &counts)
{
    std::size_t slot = string_slot_bytes(data);
    for (int i = 0; i < IO_ELEMENT_TYPES; i++) {
        auto type = static_cast<element_type>(i);
        auto values = static_cast<std::size_t>(counts[static_cast<std::size_t>(i)]);
        if (values > 0) {
            std::memset(element_array(data, type), 0, values * value_bytes(type, slot));
        }
    }
}

bool element_storage::allocate(const element_counts &counts, std::size_t string_slot)
{
    bytes_ = 0;
    for (std::size_t i = 0; i < counts.size(); i++) {
        auto type = static_cast<element_type>(i);
        std::size_t bytes = static_cast<std::size_t>(counts[i]) * value_bytes(type, string_slot);
        bytes_ += static_cast<std::int64_t>(bytes);
        // At least one byte, because a missing array would mean something else
        // than an empty one.
        memory_[i].reset(new (std::nothrow) char[bytes + 1]);
        if (memory_[i] == nullptr) {
            return false;
        }
        // The memory is aligned for any type: it comes from operator new.
        set_element_array(data_, type, memory_[i].get());
        set_element_array_size(data_, type, counts[i]);
    }
    data_.string_slot = static_cast<std::int64_t>(string_slot);
    return true;
}
