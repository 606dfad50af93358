// Tests how numbers in values are read and rounded.
#include "velapilt/src/velNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

TEST(VelNumber, TextsThatAreNumbers)
{
    const struct
    {
        const char *text;
        double expected;
    } cases[] = {
        {"", 0},
        {" ", 0},
        {"0", 0},
        {"12", 12},
        {"-12", -12},
        {"+12", 12},
        {" \t\n\v\f\r7", 7},
        {"2.5", 2.5},
        {".5", 0.5},
        {"5.", 5},
        {"-.5", -0.5},
        {"1e3", 1000},
        {"1E+3", 1000},
        {"1e-3", 0.001},
        {"1e", 1},  // an exponent needs digits
        {"1e+", 1}, //
        {"1.5.2", 1.5},
        {"1,5", 1}, // reading stops at the first character that cannot belong to a number
        {"3 m", 3},
        {"3[m]", 3},
        {"0x10", 0}, // hexadecimal is not read
        {"1d3", 1},
        {"x1", 0},
        {"+-1", 0},
        {"--1", 0},
        {"- 1", 0},
        {".", 0},
        {"-", 0},
        {"e5", 0},
        {"inf", 0},
        {"-infinity", 0},
        {"nan", 0},
        {"1e308", 1e308},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(velReadNumber(c.text), c.expected) << c.text;
    }
}

TEST(VelNumber, NumbersOutsideTheRangeOfDouble)
{
    EXPECT_EQ(velReadNumber("1e400"), HUGE_VAL);
    EXPECT_EQ(velReadNumber("-1e400"), -HUGE_VAL);
    EXPECT_EQ(velReadNumber("1e99999999999999999999"), HUGE_VAL);
    EXPECT_EQ(velReadNumber(std::string(400, '9')), HUGE_VAL);
    EXPECT_EQ(velReadNumber("1e-400"), 0);
    EXPECT_EQ(velReadNumber("-1e-99999999999999999999"), 0);
    EXPECT_EQ(velReadNumber("0." + std::string(400, '0') + "1"), 0);
    EXPECT_EQ(velReadNumber("0." + std::string(400, '0') + "1e401"), 1);
    EXPECT_EQ(velReadNumber("0e999999"), 0);
    EXPECT_EQ(velReadNumber(std::string(400, '9') + "e-500"), 1e-100);
}

TEST(VelNumber, AValueRoundsHalfAwayFromZero)
{
    EXPECT_EQ(velRoundValue(2.5), 3);
    EXPECT_EQ(velRoundValue(-2.5), -3);
    EXPECT_EQ(velRoundValue(2.4), 2);
    EXPECT_EQ(velRoundValue(-2.4), -2);
    EXPECT_EQ(velRoundValue(-1.7), -2);
    EXPECT_EQ(velRoundValue(0.5), 1);
    EXPECT_EQ(velRoundValue(-0.5), -1);
    EXPECT_EQ(velRoundValue(-0.4), 0);
    EXPECT_EQ(velRoundValue(0), 0);
}

TEST(VelNumber, AnElementAddsAHalfForBothSigns)
{
    EXPECT_EQ(velRoundElement(2.5), 3);
    EXPECT_EQ(velRoundElement(-2.5), -2);
    EXPECT_EQ(velRoundElement(-1.7), -1);
    EXPECT_EQ(velRoundElement(-1.4), 0);
    EXPECT_EQ(velRoundElement(-0.5), 0);
    EXPECT_EQ(velRoundElement(1.4), 1);
}

TEST(VelNumber, ValuesOutsideThirtyTwoBitsAreClamped)
{
    for (const auto round : {velRoundValue, velRoundElement}) {
        EXPECT_EQ(round(2147483646.0), highest - 1);
        EXPECT_EQ(round(2147483647.0), highest);
        EXPECT_EQ(round(2147483648.0), highest);
        EXPECT_EQ(round(1e30), highest);
        EXPECT_EQ(round(-1e30), lowest);
        EXPECT_EQ(round(HUGE_VAL), highest);
        EXPECT_EQ(round(-HUGE_VAL), lowest);
    }
    EXPECT_EQ(velRoundValue(-2147483648.0), lowest);
    EXPECT_EQ(velRoundElement(-2147483648.0), lowest + 1); // here too, the half is added
    EXPECT_EQ(velRoundElement(-2147483649.0), lowest);
}

} // namespace
