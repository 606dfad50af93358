#include "velapilt/src/velScan.h"

#include "velapilt/src/velHandle_p.h"

#include <array>

namespace {

enum : std::uint8_t { Blank = 1, Rewrite = 2, Control = 4 };

constexpr std::array<std::uint8_t, 256> makeClasses()
{
    std::array<std::uint8_t, 256> classes{};
    for (int c = 0; c < 32; ++c) {
        classes[static_cast<std::size_t>(c)] = velIsSpace(static_cast<char>(c)) ? Rewrite : Control;
    }
    classes[' '] = Blank;
    classes['#'] = Rewrite;
    return classes;
}

constexpr std::array<std::uint8_t, 256> classes = makeClasses();

} // namespace

velLineTraits velScanLine(std::string_view line)
{
    unsigned seen = 0;
    unsigned doubled = 0; // Blank where two of them follow each other
    unsigned previous = 0;
    for (const char c : line) {
        const unsigned kind = classes[static_cast<unsigned char>(c)];
        seen |= kind;
        doubled |= kind & previous;
        previous = kind;
    }
    return {(seen & Rewrite) != 0 || (doubled & Blank) != 0, (seen & Control) != 0};
}
