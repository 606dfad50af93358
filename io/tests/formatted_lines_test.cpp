// Tests formatted data whose lines have other lengths than this library writes.
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

class FormattedLines : public ::testing::Test
{
protected:
    FormattedLines() : client_(env_) {}

    static std::string padded(const std::string &text, std::size_t width)
    {
        return text + std::string(width - text.size(), ' ') + "\n";
    }

    static std::string offset(std::size_t value)
    {
        std::string digits = std::to_string(value);
        return std::string(20 - digits.size(), ' ') + digits + "\n";
    }

    /// A file of one dataset with these bytes as its data, and nothing after it.
    static std::string file(const std::string &type, int count, const std::string &data)
    {
        std::string inner = "*DATASET\n*HEADER\n" +
                            padded("WHAT\x1b"
                                   "A",
                                   80) +
                            padded("WHERE\x1b"
                                   "B",
                                   80) +
                            padded("WHEN\x1b"
                                   "1",
                                   80) +
                            padded("NUMATTRB\x1b"
                                   "0",
                                   80) +
                            padded("DATATYPE\x1b" + type, 256) +
                            padded("NUMBER\x1b" + std::to_string(count), 80) + "*DATA\n" + data +
                            "*ENDDATASET\n";
        return "*INFO\n" + offset(0) + "*ENDINFO\nF \n" + offset(inner.size()) + inner +
               offset(inner.size());
    }

    std::string read(const std::string &type, int count, const std::string &data)
    {
        env_["f"] = file(type, count, data);
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        take_messages();
        return client_.read("A", "B", 1);
    }

    io_memory_env env_;
    io_client client_;
};

TEST_F(FormattedLines, OfStringsArePaddedWithSpaces)
{
    EXPECT_EQ(read("STRI", 1, "abc\n"), "\"abc\"");
    EXPECT_EQ(read("STRI", 4, "abc\n\nd\ne f\n"), "\"abc\" \"\" \"d\" \"e f\"");
    std::string lines;
    std::string expected;
    for (int i = 0; i < 5000; i++) {
        lines += "x\n";
        expected += i == 0 ? "\"x\"" : " \"x\"";
    }
    EXPECT_EQ(read("STRI:2000", 5000, lines), expected);
    EXPECT_EQ(take_messages(), "");
}

TEST_F(FormattedLines, OfCharactersArePaddedWithSpaces)
{
    EXPECT_EQ(read("CHAR", 5, "ab\n"), "a b      ");
    EXPECT_EQ(read("CHAR", 3, "\n"), "     ");
}

TEST_F(FormattedLines, OfLogicalsMayEndWithTheirLastWord)
{
    EXPECT_EQ(read("LOGL", 3, ".TRUE.    F         T\n"), "1 0 1");
    EXPECT_EQ(read("LOGL", 3, "T\nF\nT\n"), "1 0 1");
    EXPECT_EQ(read("LOGL", 2, "T         F         \n"), "1 0");
    EXPECT_EQ(read("LOGL", 1, "-1000000000\n"), "1");
    EXPECT_EQ(read("LOGL", 1, "X\n"), "code 10");
}

/// A cut number that is padded would be another number.
TEST_F(FormattedLines, OfNumbersAreNotPadded)
{
    EXPECT_EQ(read("INTR", 1, "        1\n"), "code 10");
    EXPECT_EQ(read("REAL", 1, "   1.00000000000E+0\n"), "code 10");
}

/// The library compares the header with the rest of the file before it allocates
/// memory.
TEST_F(FormattedLines, ThatDoNotFitInTheFileAreRefused)
{
    for (const char *type : {"STRI", "CHAR", "INTR", "REAL", "LOGL", "STRC{INTR:1}"}) {
        EXPECT_EQ(read(type, 2000000000, "ab\n"), "code 10") << type;
        EXPECT_NE(take_messages().find("the header claims more data than the 36 bytes"),
                  std::string::npos)
            << type;
    }
    EXPECT_EQ(read("STRI:2000000000", 3, "a\nb\nc\n"), "code 10");
}

TEST_F(FormattedLines, OfARecordWithoutItsLastEscHaveTheirOwnCode)
{
    std::string item = "         1";
    EXPECT_EQ(read("STRC{INTR:2}", 1, item + "\x1b" + item + "\n"), "code 18");
    EXPECT_NE(take_messages().find("read_data: no string terminator to seperate different data\n"),
              std::string::npos);
    std::string many;
    for (int i = 0; i < 2000; i++) {
        many += item + "\x1b" + item + "\n";
    }
    EXPECT_EQ(read("STRC{INTR:2}", 2000, many), "code 18");
    EXPECT_EQ(read("STRC{INTR:2}", 1,
                   "5\x1b"
                   "6\x1b\n"),
              "5 6");
}

/// Code 14 asks for larger arrays only if an array is too small. Otherwise it is
/// a failure, with a message and without a number of elements.
TEST_F(FormattedLines, ThatAreTooLongDoNotAskForLargerArrays)
{
    EXPECT_EQ(read("STRI:2", 1, "abc\n"), "code 14");
    take_messages();
    std::int64_t offsets[2] = {client_.position("A", "B", 1), 0};
    char slots[IO_STRING_SLOT] = "unchanged";
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.strings = slots;
    data.strings_size = 1;
    constexpr const char *too_long = "zotreadString: read too many characters: abc\n"
                                     "iocnt: read data failed\n";
    io_header_storage header;
    header.count = 77;
    EXPECT_EQ(client_.request(IO_READ_LOCATED_DS, header.header(), data), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), too_long);
    EXPECT_EQ(header.count, 77);
    EXPECT_EQ(data.strings_size, 1);
    EXPECT_STREQ(slots, "");
    ASSERT_EQ(client_.request(IO_READ_HEADER, header.header(), data), IO_OK);
    EXPECT_EQ(client_.request(IO_READ_DATA, IO_header(), data), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), too_long);
}

/// A fault of the dataset is reported before a fault of the request.
TEST_F(FormattedLines, OfABadDatasetHaveTheSameCodeInACompressedRead)
{
    EXPECT_EQ(read("INTR", 1, "         1\n"), "1");
    io_header_storage header;
    std::int64_t offsets[2] = {client_.position("A", "B", 1), 0};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    EXPECT_EQ(client_.request(IO_READ_COMPRESSED, header.header(), data), IO_BAD_FORMAT);
    EXPECT_NE(take_messages().find("read_compressed_data: only supports binary data\n"),
              std::string::npos);
    env_["f"].replace(env_["f"].find("INTR"), 4, "WORD");
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client_.request(IO_READ_COMPRESSED, header.header(), data), IO_PARSE_ERROR);
    EXPECT_EQ(take_messages(), "parseStructure: unrecognised type code \"WORD\"\n"
                               "iocnt: read compressed data failed\n");
}

TEST_F(FormattedLines, OfRealsBeyondTheirRangeAreRefused)
{
    EXPECT_EQ(read("REAL", 1, "   1.00000000000E+39\n"), "code 10");
    EXPECT_EQ(read("REAL", 1, "  -3.50000000000E+38\n"), "code 10");
    EXPECT_EQ(read("DBLE", 1, "   1.00000000000E+39\n"), "9.9999999999999994e+38");
    EXPECT_EQ(read("STRC{REAL:1}", 1, "1E39\x1b\n"), "code 10");
    EXPECT_EQ(read("REAL", 1, "                 INF\n"), "inf");
}

} // namespace
