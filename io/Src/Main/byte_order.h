// Reversing the bytes of numbers from files of the other byte order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the table of native format letters assumes a little-endian processor");

/// Reverses each of `count` numbers of `size` bytes (1, 4 or 8) in place;
/// `numbers` needs no alignment.
inline void swap_bytes(void *numbers, std::size_t count, std::size_t size)
{
    auto *bytes = static_cast<char *>(numbers);
    if (size == 4) {
        for (std::size_t i = 0; i < count; i++) {
            std::uint32_t number = 0;
            std::memcpy(&number, bytes + 4 * i, 4);
            number = __builtin_bswap32(number);
            std::memcpy(bytes + 4 * i, &number, 4);
        }
    } else if (size == 8) {
        for (std::size_t i = 0; i < count; i++) {
            std::uint64_t number = 0;
            std::memcpy(&number, bytes + 8 * i, 8);
            number = __builtin_bswap64(number);
            std::memcpy(bytes + 8 * i, &number, 8);
        }
    }
}
