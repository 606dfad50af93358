// Scans a line: sixteen characters at a time, or one where there is no slack.
#include "velapilt/src/velScan.h"

#include "velapilt/src/velSpace.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

/// The character at `end` must be a line feed.
const char *lineFeed(const char *start, const char *end)
{
    const auto length = static_cast<std::size_t>(end - start) + 1;
    return static_cast<const char *>(std::memchr(start, '\n', length));
}

} // namespace

velScannedLine velScanLineSlowly(std::string_view line)
{
    const char *next = line.data() + line.size();
    const std::string_view text = velTrim(line);
    bool wasBlank = false;
    for (const char c : text) {
        const bool isBlank = c == ' ';
        const bool isControl = static_cast<unsigned char>(c) < ' ';
        if (isControl || c == '#' || (isBlank && wasBlank)) {
            return {line, next, std::string_view::npos, false};
        }
        wasBlank = isBlank;
    }
    return {text, next, text.find('='), true};
}

#ifdef __SSE2__

namespace {

velScannedLine wholeLine(const char *start, const char *end)
{
    const char *feed = lineFeed(start, end);
    return {
        {start, static_cast<std::size_t>(feed - start)}, feed + 1, std::string_view::npos, false};
}

constexpr std::size_t step = 16;

/// What kind each of sixteen characters has, as one bit for each character.
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
        const __m128i below = _mm_cmpeq_epi8(_mm_min_epu8(text, _mm_set1_epi8(' ' - 1)), text);
        stops = bits(_mm_or_si128(below, _mm_cmpeq_epi8(text, _mm_set1_epi8('#'))));
    }

    std::uint32_t blanks;
    std::uint32_t equals;
    std::uint32_t stops; // '#' and control characters
};

const char *skipBlanks(const char *text)
{
    constexpr std::uint64_t blanks = 0x2020202020202020U;
    while (velLoadBytes(text, 8) == blanks) {
        text += 8;
    }
    while (*text == ' ') {
        ++text;
    }
    return text;
}

} // namespace

velScannedLine velScanLine(const char *start, const char *end)
{
    const char *text = skipBlanks(start);
    std::uint32_t carry = 0; // the character before the chunk is a space
    std::size_t equals = std::string_view::npos;
    for (const char *from = text;; from += step) {
        const Chunk chunk(from);
        // Characters after the first stop belong to another line or are not used.
        const std::uint32_t own = (chunk.stops & (0U - chunk.stops)) - 1U;
        if ((chunk.blanks & (chunk.blanks << 1 | carry) & own) != 0) {
            return wholeLine(start, end);
        }
        carry = chunk.blanks >> (step - 1) & 1U;
        if ((chunk.equals & own) != 0 && equals == std::string_view::npos) {
            equals = static_cast<std::size_t>(from - text + std::countr_zero(chunk.equals));
        }
        if (chunk.stops == 0) {
            continue;
        }
        const char *feed = from + std::countr_zero(chunk.stops);
        if (*feed != '\n') {
            return wholeLine(start, end);
        }
        const std::size_t length = static_cast<std::size_t>(feed - text);
        const bool endsInBlank = length > 0 && feed[-1] == ' ';
        return {{text, length - (endsInBlank ? 1 : 0)}, feed + 1, equals, true};
    }
}

std::size_t velCountLineFeeds(std::string_view text)
{
    constexpr std::size_t most = 255; // the largest count in one byte
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

velScannedLine velScanLine(const char *start, const char *end)
{
    const char *feed = lineFeed(start, end);
    velScannedLine line = velScanLineSlowly({start, static_cast<std::size_t>(feed - start)});
    line.next = feed + 1;
    return line;
}

#endif
