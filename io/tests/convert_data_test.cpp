// Tests the conversion of each pair of types at the limits of their ranges, and the
// pairs that are refused.
#include "io/Src/Main/convert_data.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

class ConvertData : public ::testing::Test
{
protected:
    ConvertData() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }

    io_memory_env env_;
    io_client client_;
};

TEST_F(ConvertData, NumbersOfEachTypeToTheOthers)
{
    ASSERT_EQ(client_.write_doubles("D", "B", 1, {1.9, -1.9, 0, 2147483647.5}), IO_OK);
    EXPECT_EQ(client_.read("D", "B", 1, "INTR"), "1 -1 0 2147483647");
    EXPECT_EQ(client_.read("D", "B", 1, "REAL"), "1.89999998 -1.89999998 0 2.14748365e+09");
    ASSERT_EQ(client_.write_doubles("E", "B", 1, {-2147483648.9}), IO_OK);
    EXPECT_EQ(client_.read("E", "B", 1, "INTR"), "-2147483648");
    ASSERT_EQ(client_.write_integers("I", "B", 1, {5, 0, -3}), IO_OK);
    EXPECT_EQ(client_.read("I", "B", 1, "DBLE"), "5 0 -3");
    EXPECT_EQ(client_.read("I", "B", 1, "LOGL"), "1 0 1");
}

TEST_F(ConvertData, NumbersThatFitNoInteger)
{
    for (double value : {2147483648.0, -2147483649.0, 1e300}) {
        ASSERT_EQ(client_.write_doubles("D", "B", 1, {1, value}), IO_OK);
        EXPECT_EQ(client_.read("D", "B", 1, "INTR"), "code 27");
        ASSERT_EQ(client_.remove("D", "B", 1), IO_OK);
    }
    ASSERT_EQ(client_.write_doubles("D", "B", 1, {std::numeric_limits<double>::quiet_NaN()}),
              IO_OK);
    EXPECT_EQ(client_.read("D", "B", 1, "INTR"), "code 27");
}

TEST_F(ConvertData, DoublesBeyondTheRangeOfReal)
{
    constexpr double largest = std::numeric_limits<float>::max();
    for (double value : {1e39, -1e300, largest * 1.0000001}) {
        ASSERT_EQ(client_.write_doubles("D", "B", 1, {1, value}), IO_OK);
        take_messages();
        EXPECT_EQ(client_.read("D", "B", 1, "REAL"), "code 27") << value;
        EXPECT_EQ(take_messages(), "convert_data: a number is beyond the range of REAL\n"
                                   "iocnt: read data failed\n");
        ASSERT_EQ(client_.remove("D", "B", 1), IO_OK);
    }
    ASSERT_EQ(client_.write_doubles("D", "B", 1, {largest, -largest}), IO_OK);
    EXPECT_EQ(client_.read("D", "B", 1, "REAL"), "3.40282347e+38 -3.40282347e+38");
    ASSERT_EQ(client_.write_doubles("D", "B", 2, {1 / 0.0, -1 / 0.0, 1e-300}), IO_OK);
    EXPECT_EQ(client_.read("D", "B", 2, "REAL"), "inf -inf 0");
}

TEST_F(ConvertData, StringsAreCutOrPadded)
{
    ASSERT_EQ(client_.write_strings("S", "B", 1, {"abcdef", "x"}), IO_OK);
    EXPECT_EQ(client_.read("S", "B", 1, "STRI:3"), "\"abc\" \"x\"");
    EXPECT_EQ(client_.read("S", "B", 1, "STRI:200"), "\"abcdef\" \"x\"");
}

std::string refusal(const char *from, const char *to)
{
    io_memory_env env;
    io_reporter report(env);
    report.set_routine(collect_message);
    data_type a;
    data_type b;
    take_messages();
    EXPECT_EQ(parseStructure(report, from, a), IO_OK);
    EXPECT_EQ(parseStructure(report, to, b), IO_OK);
    int code = check_conversion(report, from, a, to, b);
    return code == IO_OK ? "" : std::to_string(code) + " " + take_messages();
}

TEST_F(ConvertData, TypesThatCannotBeConverted)
{
    EXPECT_EQ(refusal("INTR", "STRC{INTR:1 INTR:1}"),
              "27 convert_data: cannot convert from INTR to STRC{INTR:1 INTR:1}: different total"
              " number of items\n");
    EXPECT_EQ(refusal("STRC{INTR:1 REAL:2}", "STRC{INTR:1 REAL:3}"),
              "27 convert_data: cannot convert from STRC{INTR:1 REAL:2} to STRC{INTR:1 REAL:3}:"
              " counts differ for item 2\n");
    EXPECT_EQ(refusal("STRI", "INTR"),
              "27 convert_data: cannot convert from STRI to INTR: incompatible types for item 1\n");
    EXPECT_NE(refusal("LOGL", "REAL"), "");
    EXPECT_NE(refusal("CHAR", "STRI"), "");
    EXPECT_EQ(refusal("LOGL", "INTR"), "");
    EXPECT_EQ(refusal("STRC{REAL:2 DBLE:1}", "STRC{INTR:2 REAL:1}"), "");
}

TEST_F(ConvertData, RecordsItemByItem)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    data_type from;
    data_type to;
    ASSERT_EQ(parseStructure(report, "STRC{INTR:1 DBLE:2}", from), IO_OK);
    ASSERT_EQ(parseStructure(report, "STRC{REAL:1 INTR:2}", to), IO_OK);
    std::int32_t integers[] = {1, 2};
    double doubles[] = {10, 11, 20, 21};
    IO_data in;
    in.integers = integers;
    in.integers_size = 2;
    in.doubles = doubles;
    in.doubles_size = 4;
    float reals[2] = {};
    std::int32_t converted[4] = {};
    IO_data out;
    out.reals = reals;
    out.integers = converted;
    ASSERT_EQ(convert_data(report, from, in, to, out, 2), IO_OK);
    EXPECT_EQ(reals[1], 2);
    EXPECT_EQ(converted[0], 10);
    EXPECT_EQ(converted[3], 21);
    in.doubles_size = 3;
    EXPECT_EQ(convert_data(report, from, in, to, out, 2), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), "convert_data: not enough dble input data\n");
}

TEST_F(ConvertData, ArraysThatAreTooSmall)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    const char *const kinds[] = {"string", "char", "intr", "real", "dble", "logl"};
    for (int type = 0; type < IO_ELEMENT_TYPES; type++) {
        data_type both;
        ASSERT_EQ(parseStructure(report, element_type_name(static_cast<element_type>(type)), both),
                  IO_OK);
        IO_data none;
        IO_data out;
        EXPECT_EQ(convert_data(report, both, none, both, out, 1), IO_NO_ROOM);
        EXPECT_EQ(take_messages(),
                  std::string("convert_data: not enough ") + kinds[type] + " input data\n");
    }
}

} // namespace
