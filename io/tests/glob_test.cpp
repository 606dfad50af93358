// Tests patterns: a table of patterns and texts, and whether they match.
#include "io/Src/Main/glob.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Glob, FindsPatterns)
{
    for (const char *text : {"*", "a?", "[", "x]"}) {
        EXPECT_TRUE(glob_has_pattern(text)) << text;
    }
    for (const char *text : {"", "G/COMMANDS", "a\\b", "^-"}) {
        EXPECT_FALSE(glob_has_pattern(text)) << text;
    }
}

struct glob_case
{
    const char *pattern;
    const char *text;
    bool matches;
};

TEST(Glob, Matches)
{
    const glob_case cases[] = {
        {"*", "", true},         {"*", "anything", true},  {"T*", "TEMP", true},
        {"T*", "PT", false},     {"a**b", "ab", true},     {"a*b", "aXbYb", true},
        {"a*b", "aXbYc", false}, {"?", "", false},         {"?", "x", true},
        {"?", "xy", false},      {"a?c", "abc", true},     {"[abc]*", "b", true},
        {"[abc]", "d", false},   {"[^abc]", "d", true},    {"[^abc]", "a", false},
        {"[a-c]", "b", true},    {"[a-c]", "-", false},    {"[]x]", "]", true},
        {"[]x]", "x", true},     {"[^]x]", "]", false},    {"[^]x]", "y", true},
        {"[-x]", "-", true},     {"[^-x]", "-", false},    {"[x-]", "-", true},
        {"[x-]", "w", false},    {"[abc", "a", false},     {"[\\]", "\\", true},
        {"\\*?", "*a", true},    {"\\*?", "ba", false},    {"*\\", "a\\", true},
        {"*a", "A", false},      {"]", "]", true},         {"plain", "plain", true},
        {"a\\b", "a\\b", true},  {"*.*.*", "a.b.c", true}, {"[a-]]", "a]", true},
    };
    for (const glob_case &one : cases) {
        EXPECT_EQ(glob_match(one.pattern, one.text), one.matches)
            << one.pattern << " on " << one.text;
    }
}

TEST(Glob, ManyStarsDoNotTakeExponentialTime)
{
    std::string pattern;
    for (int i = 0; i < 30; i++) {
        pattern += "*a";
    }
    EXPECT_FALSE(glob_match(pattern + "b", std::string(5000, 'a')));
}

} // namespace
