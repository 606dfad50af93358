// SourceText: lines and the byte order mark. readSource: which files it reads.
#include "veltext/sourceText.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

TEST(SourceText, HasNoByteOrderMarkInItsFirstLine)
{
    const SourceText text("\xEF\xBB\xBF"
                          "A:\nEND\n");
    EXPECT_TRUE(text.hasByteOrderMark());
    EXPECT_EQ(text.lineCount(), 2U);
    EXPECT_EQ(text.line(0), "A:");
    EXPECT_EQ(text.parsedLine(0), "A:");
    EXPECT_EQ(text.lineStart(0), 3U);
    EXPECT_EQ(text.bytes(), "\xEF\xBB\xBF"
                            "A:\nEND\n");
}

TEST(SourceText, AcceptsTheMarkOnlyAtTheStart)
{
    EXPECT_FALSE(SourceText("A:\n\xEF\xBB\xBF"
                            "END\n")
                     .hasByteOrderMark());
    EXPECT_FALSE(SourceText("\xEF\xBB").hasByteOrderMark());
    EXPECT_FALSE(SourceText("").hasByteOrderMark());
    const SourceText alone("\xEF\xBB\xBF");
    EXPECT_TRUE(alone.hasByteOrderMark());
    EXPECT_EQ(alone.lineCount(), 0U);
    EXPECT_EQ(alone.lineStart(0), 3U);
}

TEST(SourceText, IsReadFromRegularFilesOnly)
{
    EXPECT_FALSE(readSource("/"));
    EXPECT_FALSE(readSource("/dev/null"));
    EXPECT_FALSE(readSource("/no such file"));
}

} // namespace
} // namespace veltext
