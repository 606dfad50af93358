// Tests the words of a handle, and the comparison of short texts.
#include "velapilt/src/velWords.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <map>

namespace {

TEST(VelWords, TheFirstWords)
{
    velArena arena;
    velWords words(arena);
    EXPECT_EQ(words.find(""), velWords::none);
    EXPECT_EQ(words.find("/"), velWords::slash);
    EXPECT_EQ(words.find("FLOW"), velWords::none);
    EXPECT_EQ(words.view(velWords::none), "");
    EXPECT_EQ(words.view(velWords::slash), "/");
}

TEST(VelWords, AWordHasOneNumber)
{
    velArena arena;
    velWords words(arena);
    const std::uint32_t flow = words.intern("FLOW");
    EXPECT_EQ(words.intern("FLOW"), flow);
    EXPECT_EQ(words.find("FLOW"), flow);
    EXPECT_NE(words.intern("flow"), flow);
    EXPECT_NE(words.intern("FLOW "), flow);
    EXPECT_NE(words.intern("FLO"), flow);
    EXPECT_STREQ(words.text(flow), "FLOW");
    EXPECT_FALSE(words.isChecked(flow));
    words.setChecked(flow);
    EXPECT_TRUE(words.isChecked(flow));
    EXPECT_FALSE(words.isChecked(words.find("flow")));
}

TEST(VelWords, WordsThatDifferInOneByte)
{
    velArena arena;
    velWords words(arena);
    std::map<std::string, std::uint32_t> known;
    for (std::size_t length = 1; length < 70; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::string word(length, 'x');
            word[place] = static_cast<char>('a' + place % 20);
            known.emplace(word, words.intern(word));
        }
    }
    std::map<std::uint32_t, std::string> byNumber;
    for (const auto &[word, number] : known) {
        ASSERT_EQ(words.find(word), number) << word;
        ASSERT_EQ(words.view(number), word);
        ASSERT_TRUE(byNumber.emplace(number, word).second) << word;
    }
}

TEST(VelWords, ManyRandomWords)
{
    Random random(1);
    velArena arena;
    velWords words(arena);
    std::map<std::string, std::uint32_t> known;
    for (int i = 0; i < 50000; ++i) {
        const std::string word = random.text(1 + random.below(24), "aAbB01 \xC4");
        const auto found = known.find(word);
        ASSERT_EQ(words.find(word), found == known.end() ? velWords::none : found->second);
        known[word] = words.intern(word);
    }
    EXPECT_EQ(words.count(), known.size() + 2);
    for (const auto &[word, number] : known) {
        ASSERT_EQ(words.find(word), number);
    }
}

TEST(VelBytes, SameBytes)
{
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string text(length, 'x');
        EXPECT_TRUE(velSameBytes(text.data(), std::string(text).data(), length));
        for (std::size_t place = 0; place < length; ++place) {
            std::string other = text;
            other[place] = 'y';
            EXPECT_FALSE(velSameBytes(text.data(), other.data(), length)) << length << " " << place;
            EXPECT_TRUE(velSameBytes(text.data(), other.data(), place));
        }
    }
}

} // namespace
