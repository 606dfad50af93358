// Tests arrays of each kind: growth, terminators, lengths, copies, and adds of
// another kind.
#include "velapilt/src/velArray.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

std::unique_ptr<char[]> owned(const char *text)
{
    const std::size_t size = std::strlen(text) + 1;
    auto copy = std::make_unique<char[]>(size);
    std::memcpy(copy.get(), text, size);
    return copy;
}

TEST(VelArray, KindsHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(velArrayKind::Characters), 0);
    EXPECT_EQ(static_cast<int>(velArrayKind::Strings), 1);
    EXPECT_EQ(static_cast<int>(velArrayKind::Integers), 2);
    EXPECT_EQ(static_cast<int>(velArrayKind::Pointers), 3);
}

TEST(VelArray, CapacityDoublesWhenAnAddNeedsRoom)
{
    velArray strings(velArrayKind::Strings);
    velArray integers(velArrayKind::Integers);
    velArray pointers(velArrayKind::Pointers);
    for (std::int32_t i = 0; i < 41; ++i) {
        const std::int32_t expected = i <= 10 ? 10 : i <= 20 ? 20 : 40;
        EXPECT_EQ(strings.capacity(), expected) << i;
        EXPECT_EQ(integers.capacity(), expected) << i;
        EXPECT_EQ(pointers.capacity(), expected) << i;
        EXPECT_EQ(strings.addString("x"), 1);
        EXPECT_EQ(integers.addInteger(-i), 1);
        EXPECT_EQ(pointers.addPointer(&pointers), 1);
    }
    EXPECT_EQ(strings.capacity(), 80);
    EXPECT_EQ(strings.count(), 41);
    EXPECT_EQ(integers.integer(40), -40);
    EXPECT_EQ(pointers.pointer(40), &pointers);
}

TEST(VelArray, CharactersAlwaysHaveTheirTerminator)
{
    velArray array(velArrayKind::Characters);
    std::string expected;
    for (int i = 0; i < 60; ++i) {
        const std::int32_t capacity = i <= 10 ? 11 : i <= 22 ? 23 : i <= 46 ? 47 : 95;
        EXPECT_EQ(array.capacity(), capacity) << i;
        EXPECT_STREQ(array.characters(), expected.c_str());
        const char c = static_cast<char>('a' + i % 26);
        EXPECT_EQ(array.addCharacter(c), 1);
        expected += c;
    }
    EXPECT_EQ(array.count(), 60);
    EXPECT_STREQ(array.characters(), expected.c_str());
}

TEST(VelArray, AddingAnotherKindFails)
{
    velArray characters(velArrayKind::Characters);
    velArray strings(velArrayKind::Strings);
    velArray integers(velArrayKind::Integers);
    velArray pointers(velArrayKind::Pointers);
    EXPECT_EQ(characters.addString("x"), 0);
    EXPECT_EQ(characters.addInteger(1), 0);
    EXPECT_EQ(strings.addInteger(1), 0);
    EXPECT_EQ(strings.addCharacter('x'), 0);
    EXPECT_EQ(strings.addPointer(&strings), 0);
    EXPECT_EQ(integers.addString("x"), 0);
    EXPECT_EQ(integers.addPointer(&integers), 0);
    EXPECT_EQ(pointers.addInteger(1), 0);
    EXPECT_EQ(pointers.addOwnedString(owned("x")), 0);
    for (const velArray *array : {&characters, &strings, &integers, &pointers}) {
        EXPECT_EQ(array->count(), 0);
        EXPECT_EQ(array->totalLength(), 0);
    }
}

TEST(VelArray, TotalLengthCountsEveryText)
{
    velArray array(velArrayKind::Strings);
    EXPECT_EQ(array.addString("four"), 1);
    EXPECT_EQ(array.totalLength(), 4);
    EXPECT_EQ(array.addOwnedString(owned("five!")), 1);
    EXPECT_EQ(array.totalLength(), 9);
    EXPECT_EQ(array.addOwnedString(nullptr), 1); // it counts, but has no length
    EXPECT_EQ(array.count(), 3);
    EXPECT_EQ(array.totalLength(), 9);
    EXPECT_EQ(array.addString(""), 1);
    EXPECT_EQ(array.totalLength(), 9);
    EXPECT_STREQ(array.string(0), "four");
    EXPECT_STREQ(array.string(1), "five!");
    EXPECT_EQ(array.string(2), nullptr);
    EXPECT_STREQ(array.string(3), "");
}

TEST(VelArray, IndexesOutsideGiveNothing)
{
    velArray array(velArrayKind::Strings);
    array.addString("x");
    EXPECT_EQ(array.string(-1), nullptr);
    EXPECT_EQ(array.string(1), nullptr);
    EXPECT_EQ(array.integer(0), 0);
    EXPECT_EQ(array.pointer(0), nullptr);
    EXPECT_EQ(array.characters(), nullptr);
    EXPECT_TRUE(array.integers().empty());
}

TEST(VelArray, TextsKeepTheirAddresses)
{
    velArray array(velArrayKind::Strings);
    std::vector<const char *> places;
    for (std::size_t i = 0; i < 5000; ++i) {
        array.addString(std::string(i % 700, 'x') + std::to_string(i));
        places.push_back(array.string(static_cast<std::int32_t>(i)));
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        ASSERT_EQ(array.string(static_cast<std::int32_t>(i)), places[i]);
        ASSERT_EQ(places[i], std::string(i % 700, 'x') + std::to_string(i));
    }
}

TEST(VelArray, CopiesAreIndependent)
{
    velStringList copy;
    std::vector<std::int32_t> numbers;
    {
        velArray strings(velArrayKind::Strings);
        strings.addString("a");
        strings.addOwnedString(nullptr);
        strings.addString("c");
        copy = strings.copyStrings();
        EXPECT_NE(copy[0], strings.string(0));
        EXPECT_EQ(strings.count(), 3);
        velArray integers(velArrayKind::Integers);
        integers.addInteger(3);
        integers.addInteger(-4);
        numbers = integers.integers();
    }
    ASSERT_EQ(copy.size(), 3U);
    EXPECT_STREQ(copy[0], "a");
    EXPECT_EQ(copy[1], nullptr);
    EXPECT_STREQ(copy[2], "c");
    EXPECT_EQ(copy.data()[3], nullptr); // the null end
    EXPECT_EQ(numbers, (std::vector<std::int32_t>{3, -4}));
}

TEST(VelArray, TakingTheTextsLeavesANewArray)
{
    velArray array(velArrayKind::Strings);
    for (int i = 0; i < 25; ++i) {
        array.addString(std::to_string(i));
    }
    const char *const first = array.string(0);
    const velStringList taken = array.takeStrings();
    EXPECT_EQ(taken.size(), 25U);
    EXPECT_EQ(taken[0], first); // not copied
    EXPECT_STREQ(taken[24], "24");
    EXPECT_EQ(taken.data()[25], nullptr);
    EXPECT_EQ(array.count(), 0);
    EXPECT_EQ(array.capacity(), 10);
    EXPECT_EQ(array.totalLength(), 0);
    EXPECT_EQ(array.addString("again"), 1);
    EXPECT_STREQ(array.string(0), "again");
    EXPECT_STREQ(taken[0], "0");
}

TEST(VelArray, ClearKeepsTheCapacity)
{
    velArray strings(velArrayKind::Strings);
    velArray integers(velArrayKind::Integers);
    velArray characters(velArrayKind::Characters);
    for (int i = 0; i < 11; ++i) {
        strings.addString("text");
        integers.addInteger(7);
        characters.addCharacter('x');
    }
    strings.clear();
    integers.clear();
    characters.clear();
    EXPECT_EQ(strings.capacity(), 20);
    EXPECT_EQ(strings.count(), 0);
    EXPECT_EQ(strings.totalLength(), 0);
    EXPECT_EQ(strings.string(0), nullptr);
    EXPECT_EQ(integers.integer(0), 0);
    EXPECT_STREQ(characters.characters(), "");
    EXPECT_EQ(strings.addString("b"), 1);
    EXPECT_STREQ(strings.string(0), "b");
}

TEST(VelStringList, AListNeverFilledHasNoData)
{
    const velStringList list;
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0U);
    EXPECT_TRUE(list.empty());

    const velStringList none = velArray(velArrayKind::Strings).takeStrings();
    ASSERT_NE(none.data(), nullptr); // filled with nothing: just the null end
    EXPECT_EQ(none.data()[0], nullptr);
    EXPECT_TRUE(none.empty());
}

} // namespace
