// Tests how a text is read line by line.
#include "common/takeLine.h"

#include <gtest/gtest.h>

namespace {

/// Each line in brackets.
std::string lines(std::string_view text)
{
    std::string lines;
    while (!text.empty()) {
        lines += '[' + std::string(velEditor::takeLine(&text)) + ']';
    }
    return lines;
}

TEST(TakeLine, GivesEachLineWithoutItsLineFeed)
{
    EXPECT_EQ(lines("a\nb\n"), "[a][b]");
    EXPECT_EQ(lines("a\n\nb"), "[a][][b]");
    EXPECT_EQ(lines("\n"), "[]");
    EXPECT_EQ(lines("a\r\n"), "[a\r]");
    EXPECT_EQ(lines(""), "");
}

TEST(TakeLine, OfAnEmptyTextIsEmpty)
{
    std::string_view text;
    EXPECT_EQ(velEditor::takeLine(&text), "");
    EXPECT_EQ(text, "");
}

} // namespace
