// Tests long lines cut into pieces.
#include "velapilt/src/velWrap.h"

#include "velapilt/src/velapilt.h"
#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

std::string wrapped(const std::string &line, std::int32_t width)
{
    velArray lines(velArrayKind::Strings);
    const char *error = velWrapLine(line.c_str(), width, &lines);
    return error == nullptr ? asLines(lines) : error;
}

TEST(VelWrap, ALineThatFitsIsNotChanged)
{
    EXPECT_EQ(wrapped("", 10), "\n");
    EXPECT_EQ(wrapped("abc def", 0), "abc def\n");
    EXPECT_EQ(wrapped("abc def", 8), "abc def\n");
    EXPECT_EQ(wrapped("abc def", 7), "abc def\n");
    EXPECT_EQ(wrapped(std::string(100000, 'x'), 0), std::string(100000, 'x') + "\n");
}

TEST(VelWrap, WidthsThatAreTooShort)
{
    for (const std::int32_t width : {1, 2, -1, -80, INT32_MIN}) {
        EXPECT_EQ(wrapped("abc", width), "velWrapLine: requested line length too short");
        EXPECT_EQ(wrapped("", width), "velWrapLine: requested line length too short");
    }
}

TEST(VelWrap, TheSpaceStaysAfterItsWord)
{
    EXPECT_EQ(wrapped("aaa bbb ccc ddd", 10), "aaa bbb \\\n"
                                              "  ccc ddd\n");
}

// "aaa bbb" and the marker would fit into 8, but bbb would end at the edge.
TEST(VelWrap, AWordThatWouldEndAtTheEdgeMovesToTheNextPiece)
{
    EXPECT_EQ(wrapped("aaa bbb ccc", 8), "aaa \\\n"
                                         "  bbb \\\n"
                                         "  ccc\n");
    EXPECT_EQ(wrapped("aaa bbb ccc", 9), "aaa bbb \\\n"
                                         "  ccc\n");
}

TEST(VelWrap, AHardCutInsideAWord)
{
    EXPECT_EQ(wrapped("aaaabbbbcccc", 5), "aaaa\\\n"
                                          "bbbb\\\n"
                                          "cccc\n");
    EXPECT_EQ(wrapped("x = aaaaaaaaaaaaaaaa", 8), "x = \\\n"
                                                  "  aaaaa\\\n"
                                                  "  aaaaa\\\n"
                                                  "  aaaaaa\n");
}

// The space would be lost at the start of the next piece.
TEST(VelWrap, AHardCutIsNotMadeBeforeASpace)
{
    EXPECT_EQ(wrapped("aaaa bbbb", 5), "aaa\\\n"
                                       "a \\\n"
                                       "bbbb\n");
}

// A piece may be cut after white space even at its very start.
TEST(VelWrap, ASpaceBeforeAWordThatIsTooLong)
{
    EXPECT_EQ(wrapped(" xxxxxxxxxxxxxxx", 8), " \\\n"
                                              "xxxxxxx\\\n"
                                              "xxxxxxxx\n");
}

TEST(VelWrap, NarrowestWidth)
{
    EXPECT_EQ(wrapped("abcdefg", 3), "ab\\\n"
                                     "cd\\\n"
                                     "efg\n");
    EXPECT_EQ(wrapped("a b c", 3), "a \\\n"
                                   "b c\n");
}

TEST(VelWrap, ContinuationIndent)
{
    const std::string words = "bbbb = " + std::string(40, 'x') + " " + std::string(40, 'y') + " " +
                              std::string(40, 'z') + " " + std::string(40, 'w');
    EXPECT_EQ(wrapped("    " + words, 80), "    bbbb = " + std::string(40, 'x') + " \\\n" +
                                               "      " + std::string(40, 'y') + " \\\n" +
                                               "      " + std::string(40, 'z') + " \\\n" +
                                               "      " + std::string(40, 'w') + "\n");
    // 20 + 2 is more than a quarter of 80.
    EXPECT_EQ(wrapped(std::string(20, ' ') + words, 80),
              std::string(20, ' ') + "bbbb = " + std::string(40, 'x') + " \\\n" +
                  std::string(40, 'y') + " \\\n" + std::string(40, 'z') + " \\\n" +
                  std::string(40, 'w') + "\n");
    // 18 + 2 is not.
    EXPECT_EQ(wrapped(std::string(18, ' ') + std::string(70, 'x'), 80),
              std::string(18, ' ') + "\\\n" + std::string(20, ' ') + std::string(59, 'x') + "\\\n" +
                  std::string(20, ' ') + std::string(11, 'x') + "\n");
}

TEST(VelWrap, OnlySpaces)
{
    EXPECT_EQ(wrapped("          ", 5), "    \\\n"
                                        "    \\\n"
                                        "  \n");
}

/// The tree that the parser makes of a text.
std::string readBack(const std::string &text)
{
    const velHandlePtr handle(velCreateHandle());
    const std::string message = parse(handle, text);
    return message.empty() ? stored(handle) : message;
}

void expectReadsBack(const std::string &line, std::int32_t width)
{
    const std::string pieces = wrapped(line, width);
    for (const std::string &piece : linesOf(pieces)) {
        ASSERT_LE(piece.size(), static_cast<std::size_t>(width)) << pieces;
    }
    ASSERT_EQ(readBack(pieces), readBack(line + "\n")) << "width " << width << "\n" << pieces;
}

TEST(VelWrap, PiecesReadBackAsTheLine)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        Random random(seed);
        for (int i = 0; i < 500; ++i) {
            const std::string indent(random.below(30), ' ');
            const std::string value = random.text(random.below(200), "abcdefgh ,=()#\\>&!:");
            const auto width = static_cast<std::int32_t>(3 + random.below(100));
            ASSERT_NO_FATAL_FAILURE(expectReadsBack(indent + "x = " + value + "e", width));
        }
    }
}

// Values that a program sets may contain runs of white space.
TEST(VelWrap, RunsOfWhiteSpaceReadBackToo)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        Random random(seed);
        for (int i = 0; i < 500; ++i) {
            const std::string value = random.text(random.below(100), "ab  \t");
            const auto width = static_cast<std::int32_t>(3 + random.below(30));
            ASSERT_NO_FATAL_FAILURE(expectReadsBack("  x = " + value + "e", width));
        }
    }
}

TEST(VelWrap, EveryWidthOfOneLine)
{
    const std::string line = "    Location = B1, B2, a rather long name, (1, 2, 3), B4 and B5";
    for (std::int32_t width = 3; width < 80; ++width) {
        ASSERT_NO_FATAL_FAILURE(expectReadsBack(line, width));
    }
}

} // namespace
