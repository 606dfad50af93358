// Compares a text with a pattern, character by character, and ignores case.
#include "tools/veltool/support/textPattern.h"

#include "tools/veltool/support/caseFold.h"

namespace veltool {

namespace {

/// The length in bytes of the UTF-8 character at the beginning.
std::size_t characterLength(std::string_view text)
{
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        ++length;
    }
    return length;
}

/// After a mismatch, the last `*` takes one more character. Earlier ones need not
/// be tried again. So the time is at most pattern length times text length.
bool matches(std::string_view pattern, std::string_view text)
{
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string_view::npos;
    std::size_t afterStar = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            afterStar = t;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            t += characterLength(text.substr(t));
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

} // namespace

TextPattern::TextPattern(std::string_view text) : folded_(foldCase(text))
{
    if (folded_.find_first_of("*?") != std::string::npos) {
        anywhere_ = '*' + folded_ + '*';
    }
}

bool TextPattern::isIn(std::string_view text) const
{
    const std::string folded = foldCase(text);
    return anywhere_.empty() ? folded.find(folded_) != std::string::npos
                             : matches(anywhere_, folded);
}

bool TextPattern::fits(std::string_view text) const
{
    return matches(folded_, foldCase(text));
}

} // namespace veltool
