// Suggestions for mistyped words: which word is the closest, and when there is
// none.
#include "tools/veltool/support/closestWord.h"

#include <gtest/gtest.h>

#include <vector>

namespace veltool {
namespace {

std::string closest(std::string_view word)
{
    const std::vector<std::string> known = {"check", "format", "tree", "get", "set", "ds"};
    return closestWord(word, known);
}

TEST(ClosestWord, FindsAWordWithAMissingAddedWrongOrSwappedLetter)
{
    EXPECT_EQ(closest("chek"), "check");
    EXPECT_EQ(closest("checkk"), "check");
    EXPECT_EQ(closest("chack"), "check");
    EXPECT_EQ(closest("cehck"), "check");
    EXPECT_EQ(closest("formta"), "format");
    EXPECT_EQ(closest("fromtta"), "") << "three edits in seven letters";
    EXPECT_EQ(closest("fromta"), "format") << "two edits in six letters";
}

TEST(ClosestWord, IgnoresTheCaseOfLetters)
{
    EXPECT_EQ(closest("CHECK"), "check");
    EXPECT_EQ(closest("Chek"), "check");
}

TEST(ClosestWord, FindsNothingIfTooManyLettersDiffer)
{
    EXPECT_EQ(closest("validate"), "");
    EXPECT_EQ(closest("ls"), "") << "one edit in two letters";
    EXPECT_EQ(closest(""), "");
    EXPECT_EQ(closestWord("chek", {}), "");
}

TEST(ClosestWord, TakesTheFirstOfEquallyCloseWords)
{
    EXPECT_EQ(closest("et"), "get");
    EXPECT_EQ(closest("sett"), "set");
}

} // namespace
} // namespace veltool
