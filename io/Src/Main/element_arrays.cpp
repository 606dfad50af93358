#include "io/Src/Main/element_arrays.h"

#include "io/Src/Main/zot_primitives.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

std::size_t value_bytes(element_type type, std::size_t string_slot)
{
    return type == IO_STRI ? string_slot : element_word_bytes(type);
}

/// Whether the array for a type is there and large enough, or not needed.
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
        // At least one, so that an empty array is not taken for a missing one.
        memory_[i].reset(new (std::nothrow) char[bytes + 1]);
        if (!memory_[i]) {
            return false;
        }
        set_element_array_size(data_, type, counts[i]);
    }
    data_.string_slot = static_cast<std::int64_t>(string_slot);
    data_.strings = memory_[IO_STRI].get();
    data_.chars = memory_[IO_CHAR].get();
    // The memory is aligned for any of them: it comes from operator new.
    data_.integers = reinterpret_cast<std::int32_t *>(memory_[IO_INTR].get());
    data_.reals = reinterpret_cast<float *>(memory_[IO_REAL].get());
    data_.doubles = reinterpret_cast<double *>(memory_[IO_DBLE].get());
    data_.logicals = reinterpret_cast<std::uint8_t *>(memory_[IO_LOGL].get());
    return true;
}
