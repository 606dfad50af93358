// Tests the plain text file: lines written, numbers read, messages of failures.
#include "io/Src/Main/plain_text.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class PlainText : public ::testing::Test
{
protected:
    PlainText() : client_(env_) { take_messages(); }

    int open(const char *access)
    {
        IO_data data;
        data.filename = "t";
        data.access = access;
        return client_.session().request(IO_OPEN_TEXT, collect_message, nullptr, &data);
    }

    int write(const std::vector<std::string> &lines)
    {
        std::vector<char> slots(lines.size() * IO_STRING_SLOT);
        for (std::size_t i = 0; i < lines.size(); i++) {
            lines[i].copy(slots.data() + i * IO_STRING_SLOT, IO_STRING_LENGTH);
        }
        IO_data data;
        data.strings = slots.data();
        data.strings_size = static_cast<std::int64_t>(lines.size());
        return client_.session().request(IO_WRITE_TEXT, collect_message, nullptr, &data);
    }

    io_memory_env env_;
    io_client client_;
};

TEST_F(PlainText, WritingAndAddingLines)
{
    ASSERT_EQ(open("w"), IO_OK);
    ASSERT_EQ(write({"one  ", ""}), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_TEXT), IO_OK);
    ASSERT_EQ(open("a"), IO_OK);
    ASSERT_EQ(write({"two"}), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_TEXT), IO_OK);
    EXPECT_EQ(env_["t"], "one\n\ntwo\n");
    ASSERT_EQ(open("w"), IO_OK);
    EXPECT_EQ(env_["t"], "");
    EXPECT_FALSE(env_.exists("t.lck"));
}

TEST_F(PlainText, ReadingNumbers)
{
    env_["t"] = "         1        -2\n         3\n   1.50000000000E+00\n       bad\n";
    ASSERT_EQ(open(nullptr), IO_OK);
    std::int32_t integers[3] = {};
    float real = 0;
    IO_data data;
    data.integers = integers;
    data.integers_size = 3;
    data.reals = &real;
    data.reals_size = 1;
    auto ask = [&](io_request number) {
        return client_.session().request(number, collect_message, nullptr, &data);
    };
    ASSERT_EQ(ask(IO_READ_INTEGERS), IO_OK);
    EXPECT_EQ(integers[1], -2);
    EXPECT_EQ(integers[2], 3);
    ASSERT_EQ(ask(IO_READ_REALS), IO_OK);
    EXPECT_EQ(real, 1.5F);
    data.integers_size = 1;
    EXPECT_EQ(ask(IO_READ_INTEGERS), IO_READ_ERROR);
    EXPECT_EQ(ask(IO_READ_REALS), IO_READ_ERROR);
}

/// The array does not contain the numbers that were read before the bad line.
TEST_F(PlainText, AFailedReadGivesNoData)
{
    std::int32_t integers[3] = {7, 7, 7};
    float reals[3] = {7, 7, 7};
    IO_data data;
    data.integers = integers;
    data.integers_size = 3;
    data.reals = reals;
    data.reals_size = 3;
    auto ask = [&](io_request number) {
        EXPECT_EQ(open(nullptr), IO_OK);
        return client_.session().request(number, collect_message, nullptr, &data);
    };
    env_["t"] = "         1        -2\n       bad\n";
    EXPECT_EQ(ask(IO_READ_INTEGERS), IO_READ_ERROR);
    EXPECT_EQ(std::count(integers, integers + 3, 0), 3);
    env_["t"] = "   1.50000000000E+00\n   1.50000000000E+39\n"; // beyond the range of REAL
    EXPECT_EQ(ask(IO_READ_REALS), IO_READ_ERROR);
    EXPECT_EQ(std::count(reals, reals + 3, 0.0F), 3);
}

TEST_F(PlainText, OpeningFailures)
{
    EXPECT_EQ(open("r"), IO_CANNOT_SEEK);
    EXPECT_EQ(take_messages(), "iif_open: can't open file t: No such file or directory\n"
                               "iocnt: open the plain text file failed\n");
    EXPECT_EQ(open("z"), IO_CANNOT_OPEN);
    EXPECT_FALSE(env_.exists("t"));
    EXPECT_EQ(open("a"), IO_OK);
    EXPECT_TRUE(env_.exists("t"));
    EXPECT_EQ(client_.request(IO_CLOSE_TEXT), IO_OK);
    EXPECT_EQ(client_.request(IO_CLOSE_TEXT), IO_NO_OPEN_FILE);
}

} // namespace
