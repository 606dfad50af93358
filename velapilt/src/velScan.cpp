#include "velapilt/src/velScan.h"

#include <algorithm>
#ifdef __SSE2__
#include <bit>
#include <cstdint>
#include <emmintrin.h>
#endif

velLineTraits velScanLineSlowly(std::string_view line)
{
    bool isPlain = true;
    bool wasBlank = false;
    for (const char c : line) {
        const bool isBlank = c == ' ';
        const bool isControl = static_cast<unsigned char>(c) < ' ';
        isPlain = isPlain && !isControl && c != '#' && !(isBlank && wasBlank);
        wasBlank = isBlank;
    }
    return {isPlain, line.find('=')};
}

#ifdef __SSE2__

namespace {

constexpr std::size_t step = 16;

/// What sixteen characters hold, a bit a character.
struct Chunk
{
    explicit Chunk(const char *from)
    {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
        const __m128i blank = _mm_set1_epi8(' ');
        const auto bits = [](__m128i mask) {
            return static_cast<std::uint32_t>(_mm_movemask_epi8(mask));
        };
        blanks = bits(_mm_cmpeq_epi8(text, blank));
        equals = bits(_mm_cmpeq_epi8(text, _mm_set1_epi8('=')));
        const __m128i hash = _mm_cmpeq_epi8(text, _mm_set1_epi8('#'));
        const __m128i notControl = _mm_cmpeq_epi8(_mm_max_epu8(text, blank), text);
        odd = bits(hash) | (bits(notControl) ^ 0xFFFFU);
    }

    std::uint32_t blanks;
    std::uint32_t equals;
    std::uint32_t odd; // '#' and control characters
};

} // namespace

velLineTraits velScanLine(std::string_view line)
{
    if (line.size() < step) {
        return velScanLineSlowly(line);
    }
    std::uint32_t odd = 0;
    std::uint32_t doubled = 0;
    std::uint32_t carry = 0; // the last character was a blank
    std::size_t equals = std::string_view::npos;
    for (std::size_t i = 0;; i += step) {
        // The last chunk ends with the line; it may look at some of it again.
        const bool isLast = i + step >= line.size();
        if (isLast) {
            i = line.size() - step;
            carry = 0;
        }
        const Chunk chunk(line.data() + i);
        odd |= chunk.odd;
        doubled |= chunk.blanks & (chunk.blanks << 1 | carry);
        carry = chunk.blanks >> (step - 1);
        if (chunk.equals != 0 && equals == std::string_view::npos) {
            equals = i + static_cast<std::size_t>(std::countr_zero(chunk.equals));
        }
        if (isLast) {
            return {(odd | doubled) == 0, equals};
        }
    }
}

std::size_t velCountLineFeeds(std::string_view text)
{
    constexpr std::size_t most = 255; // what a counter of one byte holds
    const __m128i feed = _mm_set1_epi8('\n');
    std::size_t count = 0;
    while (text.size() >= step) {
        const std::size_t chunks = std::min(text.size() / step, most);
        __m128i counters = _mm_setzero_si128();
        for (std::size_t i = 0; i < chunks; ++i) {
            const auto *next = reinterpret_cast<const __m128i *>(text.data() + i * step);
            counters = _mm_sub_epi8(counters, _mm_cmpeq_epi8(_mm_loadu_si128(next), feed));
        }
        const __m128i sums = _mm_sad_epu8(counters, _mm_setzero_si128());
        count += static_cast<std::size_t>(_mm_cvtsi128_si32(sums)) +
                 static_cast<std::size_t>(_mm_cvtsi128_si32(_mm_srli_si128(sums, 8)));
        text.remove_prefix(chunks * step);
    }
    return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

#else

std::size_t velCountLineFeeds(std::string_view text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

velLineTraits velScanLine(std::string_view line)
{
    return velScanLineSlowly(line);
}

#endif
