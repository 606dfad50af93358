// Tests the fast scan of a line against the plain one.
#include "velapilt/src/velScan.h"

#include "velapilt/src/velSpace.h"
#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr std::string_view junk = "= # \t=\n##  x==\r\xFF\n"; // must not be read

/// Checks that both scans agree: a line that the fast scan calls plain is plain,
/// and it recognises every plain line without white space around it.
void expectSame(const std::string &line)
{
    const std::string text = line + "\n" + std::string(junk.substr(0, velScanSlack));
    const velScannedLine quick = velScanLine(text.data(), text.data() + line.size());
    const velScannedLine plain = velScanLineSlowly(line);
    ASSERT_EQ(quick.next - text.data(), static_cast<std::ptrdiff_t>(line.size() + 1))
        << testing::PrintToString(line);
    if (quick.isPlain) {
        ASSERT_TRUE(plain.isPlain) << testing::PrintToString(line);
        ASSERT_EQ(quick.text, plain.text);
        ASSERT_EQ(quick.equals, plain.equals) << testing::PrintToString(line);
    } else {
        ASSERT_EQ(quick.text, line);
        ASSERT_EQ(quick.equals, std::string_view::npos);
        ASSERT_FALSE(plain.isPlain && velTrim(line) == line) << testing::PrintToString(line);
    }
}

TEST(VelScan, LinesThatArePlain)
{
    EXPECT_TRUE(velScanLineSlowly("").isPlain);
    EXPECT_TRUE(velScanLineSlowly("Option = Fluid Dependent").isPlain);
    EXPECT_TRUE(velScanLineSlowly("caf\xE9 \x7F \xFF").isPlain);
    EXPECT_FALSE(velScanLineSlowly("a  b").isPlain);
    EXPECT_FALSE(velScanLineSlowly("a\tb").isPlain);
    EXPECT_FALSE(velScanLineSlowly("a # b").isPlain);
    EXPECT_FALSE(velScanLineSlowly("a\rb").isPlain);
    EXPECT_FALSE(velScanLineSlowly(std::string_view("a\0b", 3)).isPlain);
}

TEST(VelScan, SpacesAroundAPlainLineAreLeftOut)
{
    EXPECT_EQ(velScanLineSlowly("  \t a = b \r").text, "a = b");
    EXPECT_EQ(velScanLineSlowly(" ").text, "");
    EXPECT_EQ(velScanLineSlowly(" a  = b ").text, " a  = b "); // not plain: the whole line
}

TEST(VelScan, TheFirstEqualsSign)
{
    EXPECT_EQ(velScanLineSlowly("a = b = c").equals, 2U);
    EXPECT_EQ(velScanLineSlowly("  a = b").equals, 2U); // in the text without its white space
    EXPECT_EQ(velScanLineSlowly("=").equals, 0U);
    EXPECT_EQ(velScanLineSlowly("FLOW:").equals, std::string_view::npos);
}

TEST(VelScan, OneOddCharacterAtEveryPlaceOfEveryLength)
{
    for (std::size_t length = 1; length < 70; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (const char odd : {'#', '=', ' ', '\t', '\x1F', '\x7F', '\xFF', '\0'}) {
                std::string line(length, 'x');
                line[place] = odd;
                expectSame(line);
                line[(place + 1) % length] = odd; // two of them, also side by side
                expectSame(line);
            }
        }
    }
}

TEST(VelScan, RandomLinesOfAllLengths)
{
    Random random(4);
    for (std::size_t length = 0; length < 200; ++length) {
        for (int i = 0; i < 100; ++i) {
            std::string bytes(length, '\0');
            for (char &c : bytes) {
                c = static_cast<char>(random.below(256));
                c = c == '\n' ? ' ' : c;
            }
            expectSame(bytes);
            expectSame(random.text(length, "abcdefghijklmnopqrstuvwxyz= "));
            expectSame(std::string(random.below(20), ' ') + random.text(length, "abcdefgh=:") +
                       std::string(random.below(3), ' '));
        }
    }
}

TEST(VelScan, LineFeeds)
{
    Random random(5);
    EXPECT_EQ(velCountLineFeeds(""), 0U);
    EXPECT_EQ(velCountLineFeeds(std::string(100000, '\n')), 100000U);
    EXPECT_EQ(velCountLineFeeds(std::string(100000, '\r')), 0U);
    for (std::size_t length = 0; length < 5000; length += 1 + length / 7) {
        const std::string text = random.text(length, "\nabc\x8A");
        EXPECT_EQ(velCountLineFeeds(text),
                  static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    }
}

} // namespace
