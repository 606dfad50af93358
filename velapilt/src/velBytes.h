// Short texts, eight bytes at a time.
//
// Types and names are mostly below twenty bytes, where calling memcmp or a
// byte-wise hash costs more than the work itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// The first `count` ≤ 8 bytes; with a constant count one load.
[[nodiscard]] inline std::uint64_t velLoadBytes(const char *from, std::size_t count)
{
    std::uint64_t word = 0;
    std::memcpy(&word, from, count);
    return word;
}

/// Whether `length` bytes are the same in both.
[[nodiscard]] inline bool velSameBytes(const char *a, const char *b, std::size_t length)
{
    if (length >= 8) {
        for (std::size_t i = 0; i + 8 < length; i += 8) {
            if (velLoadBytes(a + i, 8) != velLoadBytes(b + i, 8)) {
                return false;
            }
        }
        // the last eight bytes, some of them again
        return velLoadBytes(a + length - 8, 8) == velLoadBytes(b + length - 8, 8);
    }
    if (length >= 4) {
        return velLoadBytes(a, 4) == velLoadBytes(b, 4) &&
               velLoadBytes(a + length - 4, 4) == velLoadBytes(b + length - 4, 4);
    }
    for (std::size_t i = 0; i < length; ++i) {
        if (a[i] != b[i]) {
            return false;
        }
    }
    return true;
}

/// The last fifteen bytes or fewer of a text of which `left` are left, as one
/// word that differs where they do.
[[nodiscard]] inline std::uint64_t velLoadTail(const char *from, std::size_t left)
{
    if (left >= 8) {
        return velLoadBytes(from, 8) ^ velLoadBytes(from + left - 8, 8) * 31;
    }
    if (left >= 4) {
        return velLoadBytes(from, 4) | velLoadBytes(from + left - 4, 4) << 32;
    }
    if (left > 0) {
        return velLoadBytes(from, 1) | velLoadBytes(from + left / 2, 1) << 8 |
               velLoadBytes(from + left - 1, 1) << 16;
    }
    return 0;
}
