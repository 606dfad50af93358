// Matches patterns without recursion: after a mismatch, it continues at the last
// star.
#include "io/Src/Main/glob.h"

#include <algorithm>

namespace {

/// How one element of a pattern, other than a star, matches a character.
struct glob_step
{
    bool matches;
    std::size_t length; ///< number of pattern characters used; 0: nothing can match here
};

unsigned code(char c)
{
    return static_cast<unsigned char>(c);
}

/// `pattern` begins with '['.
glob_step match_set(std::string_view pattern, char c)
{
    std::size_t i = 1;
    bool negated = i < pattern.size() && pattern[i] == '^';
    i += negated ? 1 : 0;
    bool found = false;
    for (std::size_t first = i; i < pattern.size(); i++) {
        if (pattern[i] == ']' && i > first) {
            return {found != negated, i + 1};
        }
        bool range = i + 2 < pattern.size() && pattern[i + 1] == '-' && pattern[i + 2] != ']';
        char last = range ? pattern[i + 2] : pattern[i];
        found = found || (code(pattern[i]) <= code(c) && code(c) <= code(last));
        i += range ? 2 : 0;
    }
    return {false, 0};
}

glob_step match_one(std::string_view pattern, char c)
{
    switch (pattern[0]) {
    case '?':
        return {true, 1};
    case '[':
        return match_set(pattern, c);
    case '\\':
        if (pattern.size() > 1) {
            return {pattern[1] == c, 2};
        }
        return {c == '\\', 1};
    default:
        return {pattern[0] == c, 1};
    }
}

} // namespace

bool glob_has_pattern(std::string_view text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return c == '*' || c == '?' || c == '[' || c == ']'; });
}

bool glob_match(std::string_view pattern, std::string_view text)
{
    if (!glob_has_pattern(pattern)) {
        return pattern == text;
    }
    // After a mismatch, only the last star needs to match one character more; the
    // matches of earlier stars never change. So the time is at most the product
    // of the lengths.
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t after_star = std::string_view::npos;
    std::size_t star_text = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            after_star = ++p;
            star_text = t;
            continue;
        }
        glob_step step = p < pattern.size() ? match_one(pattern.substr(p), text[t]) : glob_step{};
        if (step.matches) {
            p += step.length;
            t++;
        } else if (after_star != std::string_view::npos) {
            p = after_star;
            t = ++star_text;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        p++;
    }
    return p == pattern.size();
}
