// Matches wildcards character by character, without regard to case.
#include "tools/veltool/support/textPattern.h"

#include "tools/veltool/support/caseFold.h"

namespace veltool {

namespace {

/// The bytes of the UTF-8 character at the beginning.
std::size_t characterLength(std::string_view text)
{
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U)
        ++length;
    return length;
}

/// On a mismatch the last `*` takes one character more; earlier ones need not
/// be tried again, so that no pattern takes more than pattern times text.
bool matches(std::string_view pattern, std::string_view text)
{
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string_view::npos;
    std::size_t behindStar = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            behindStar = t;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            t += characterLength(text.substr(t));
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++behindStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

} // namespace

TextPattern::TextPattern(std::string_view text) : folded_(foldCase(text))
{
    if (folded_.find_first_of("*?") != std::string::npos)
        anywhere_ = '*' + folded_ + '*';
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
