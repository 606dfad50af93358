// Tests numbers: the text or bytes written for them, and what readers accept.
#include "io/Src/Main/zot_numbers.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

/// A file in memory that the primitives use.
class ZotNumbers : public ::testing::Test
{
protected:
    ZotNumbers() : report_(env_)
    {
        report_.set_routine(collect_message);
        take_messages();
        open("");
    }

    void open(const std::string &bytes)
    {
        env_["file"] = bytes;
        io_.stream = io_stream(env_.open("file", io_open::update));
        io_.report = &report_;
    }

    std::string bytes()
    {
        EXPECT_TRUE(io_.stream.flush());
        return env_["file"];
    }

    std::string integers(const std::string &text, std::int64_t count)
    {
        open(text);
        std::vector<std::int32_t> values(static_cast<std::size_t>(count));
        if (int code = zotreadIntr(io_, IO_FORMATTED, values.data(), count)) {
            return "code " + std::to_string(code);
        }
        std::string out;
        for (std::int32_t value : values) {
            out += std::to_string(value) + " ";
        }
        return out;
    }

    io_memory_env env_;
    io_reporter report_;
    zot_io io_;
};

TEST_F(ZotNumbers, TenIntegersAreTwoLines)
{
    std::vector<std::int32_t> values = {1, 2, 3, 4, 5, 6, 7, 8, 9, -10};
    ASSERT_EQ(zotwriteIntr(io_, IO_FORMATTED, values.data(), 10), IO_OK);
    EXPECT_EQ(bytes(), "         1         2         3         4         5         6         7"
                       "         8\n         9       -10\n");
    EXPECT_EQ(integers(bytes(), 10), "1 2 3 4 5 6 7 8 9 -10 ");
}

TEST_F(ZotNumbers, ElevenCharactersWideIntegers)
{
    std::vector<std::int32_t> values = {-2000000000, 5, std::numeric_limits<std::int32_t>::min(),
                                        -1000000000, -999999999};
    ASSERT_EQ(zotwriteIntr(io_, IO_FORMATTED, values.data(), 5), IO_OK);
    EXPECT_EQ(bytes(), "-2000000000         5-2147483648-1000000000-999999999\n");
    EXPECT_EQ(integers(bytes(), 5), "-2000000000 5 -2147483648 -1000000000 -999999999 ");
}

TEST_F(ZotNumbers, LinesOfOtherLengthsAreRead)
{
    EXPECT_EQ(integers("         1\n         2         3\n", 3), "1 2 3 ");
}

TEST_F(ZotNumbers, BadIntegerLines)
{
    EXPECT_EQ(integers("         1         2\n", 1), "code 10"); // more than are left
    EXPECT_EQ(integers("       abc\n", 1), "code 10");
    EXPECT_EQ(integers("          \n", 1), "code 10");
    EXPECT_EQ(integers("\n", 1), "code 10");
    EXPECT_EQ(integers("     1.5  \n", 1), "code 10");
    EXPECT_EQ(integers("         1\n", 2), "code 10"); // the file ends
    EXPECT_EQ(integers("         1", 1), "code 10");   // no LF
    EXPECT_EQ(integers(std::string(5000, ' ') + "1\n", 1), "code 10");
}

TEST_F(ZotNumbers, RealsAsText)
{
    std::vector<float> values = {1.5F, -0.1F, 0, 3e38F, 1e-40F};
    ASSERT_EQ(zotwriteReal(io_, IO_FORMATTED, values.data(), 5), IO_OK);
    EXPECT_EQ(bytes(), "   1.50000000000E+00  -1.00000001490E-01   0.00000000000E+00"
                       "   3.00000000550E+38\n   9.99994610111E-41\n");
    std::vector<float> read(5);
    open(bytes());
    ASSERT_EQ(zotreadReal(io_, IO_FORMATTED, read.data(), 5), IO_OK);
    EXPECT_EQ(read, values);
}

TEST_F(ZotNumbers, SignsOfOtherWriters)
{
    EXPECT_EQ(integers("        +7\n", 1), "7 ");
    EXPECT_EQ(integers("       +-7\n", 1), "code 10");
    float value = 0;
    open("  +1.50000000000E+00\n");
    ASSERT_EQ(zotreadReal(io_, IO_FORMATTED, &value, 1), IO_OK);
    EXPECT_EQ(value, 1.5F);
    open(" +-1.50000000000E+00\n");
    EXPECT_EQ(zotreadReal(io_, IO_FORMATTED, &value, 1), IO_READ_ERROR);
}

TEST_F(ZotNumbers, DoublesAsTextLosePrecision)
{
    std::vector<double> values = {1.0 / 3, -1e100, std::numeric_limits<double>::infinity(),
                                  std::nan("")};
    ASSERT_EQ(zotwriteDble(io_, IO_FORMATTED, values.data(), 4), IO_OK);
    EXPECT_EQ(bytes(),
              "   3.33333333333E-01 -1.00000000000E+100                 INF                 NAN\n");
    std::vector<double> read(4);
    open(bytes());
    ASSERT_EQ(zotreadDble(io_, IO_FORMATTED, read.data(), 4), IO_OK);
    EXPECT_EQ(read[0], 0.333333333333);
    EXPECT_EQ(read[2], values[2]);
    EXPECT_TRUE(std::isnan(read[3]));
}

TEST_F(ZotNumbers, TheWarningAboutPrecisionIsTraced)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    double value = 1;
    ASSERT_EQ(zotwriteDble(io_, IO_FORMATTED, &value, 1), IO_OK);
    EXPECT_EQ(env_.trace, "TRACE> Warning: formatted floating point data is only written to"
                          " single-precision accuracy\n");
    EXPECT_EQ(take_messages(), "");
}

TEST_F(ZotNumbers, LogicalsAsText)
{
    std::vector<std::uint8_t> values = {1, 0, 7};
    ASSERT_EQ(zotwriteLogl(io_, IO_FORMATTED, values.data(), 3), IO_OK);
    EXPECT_EQ(bytes(), "         1         0         1\n");
    open("         T         F    .TRUE.   .FALSE.         9\n");
    std::vector<std::uint8_t> read(5);
    ASSERT_EQ(zotreadLogl(io_, IO_FORMATTED, read.data(), 5), IO_OK);
    EXPECT_EQ(read, (std::vector<std::uint8_t>{1, 0, 1, 0, 1}));
}

TEST_F(ZotNumbers, BinaryByteOrder)
{
    std::int32_t value = 0x01020304;
    double real = 1.0;
    ASSERT_EQ(zotwriteIntr(io_, {'U', ' '}, &value, 1), IO_OK);
    ASSERT_EQ(zotwriteIntr(io_, {'l', ' '}, &value, 1), IO_OK);
    ASSERT_EQ(zotwriteDble(io_, {'L', ' '}, &real, 1), IO_OK);
    EXPECT_EQ(bytes(), std::string("\1\2\3\4\4\3\2\1\x3f\xf0\0\0\0\0\0\0", 16));
    open(bytes());
    std::int32_t read[2] = {};
    double real_read = 0;
    ASSERT_EQ(zotreadIntr(io_, {'U', ' '}, read, 1), IO_OK);
    ASSERT_EQ(zotreadIntr(io_, {'u', ' '}, read + 1, 1), IO_OK);
    ASSERT_EQ(zotreadDble(io_, {'L', ' '}, &real_read, 1), IO_OK);
    EXPECT_EQ(read[0], value);
    EXPECT_EQ(read[1], value);
    EXPECT_EQ(real_read, 1.0);
}

} // namespace
