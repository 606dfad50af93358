// Tests strings and offsets: the bytes written for them, and what readers refuse.
#include "io/Src/Main/zot_primitives.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

constexpr format_code big = {'U', ' '};
constexpr format_code little = {'u', ' '};
constexpr format_code wide = {'L', ' '};

class ZotPrimitives : public ::testing::Test
{
protected:
    ZotPrimitives() : report_(env_)
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

    /// The bytes that `write` writes into an empty file.
    template <typename Write>
    std::string written(Write write)
    {
        open("");
        int code = write();
        EXPECT_TRUE(io_.stream.flush());
        return code == IO_OK ? env_["file"] : "code " + std::to_string(code);
    }

    std::string string_written(format_code format, std::string_view text, std::size_t width)
    {
        return written([&] { return zotwriteString(io_, format, text, width); });
    }

    std::string offset_written(format_code format, std::int64_t offset)
    {
        return written([&] { return zotwriteOffset(io_, format, offset); });
    }

    std::string string_read(const std::string &bytes, format_code format, std::size_t width)
    {
        open(bytes);
        std::string text;
        int code = zotreadString(io_, format, width, text);
        return code == IO_OK ? "'" + text + "'" : "code " + std::to_string(code);
    }

    std::string header_read(const std::string &bytes, format_code format, std::size_t most)
    {
        open(bytes);
        std::string text;
        int code = zotreadHdrString(io_, format, most, text);
        return code == IO_OK ? "'" + text + "'" : "code " + std::to_string(code);
    }

    io_memory_env env_;
    io_reporter report_;
    zot_io io_;
};

TEST_F(ZotPrimitives, PlainStrings)
{
    EXPECT_EQ(string_written(IO_FORMATTED, "ab", 5), "ab   \n");
    EXPECT_EQ(string_written(IO_FORMATTED, "abcdefg", 5), "abcde\n");
    EXPECT_EQ(string_written(IO_FORMATTED, "ab\ncd", 5), "ab   \n");
    EXPECT_EQ(string_written(IO_FORMATTED, std::string_view("a\0b", 3), 2), "a \n");
    EXPECT_EQ(string_written(big, "ab\n", 3), "ab\n");
}

TEST_F(ZotPrimitives, ReadingPlainStrings)
{
    EXPECT_EQ(string_read("ab \t\n", IO_FORMATTED, 5), "'ab'");
    EXPECT_EQ(string_read("abcde \n", IO_FORMATTED, 5), "'abcde'");
    EXPECT_EQ(string_read("\n", IO_FORMATTED, 5), "''");
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(string_read("abcdef\n", IO_FORMATTED, 5), "code 14");
    EXPECT_EQ(take_messages(), "zotreadString: read too many characters: abcdef\n");
    EXPECT_EQ(string_read("abc     \n", IO_FORMATTED, 5), "code 14");
    EXPECT_EQ(string_read("abc", IO_FORMATTED, 5), "code 10");
    EXPECT_EQ(string_read("abc", little, 5), "code 10");
    EXPECT_NE(take_messages().find("zotreadString: fread failed: read 3 bytes, expected 5"),
              std::string::npos);
    EXPECT_EQ(string_read("abc  x", little, 5), "'abc  '");
}

TEST_F(ZotPrimitives, HeaderStrings)
{
    EXPECT_EQ(written([&] { return zotwriteHdrString(io_, big, "abc", 80); }),
              std::string("\0\0\0\3abc", 7));
    EXPECT_EQ(written([&] { return zotwriteHdrString(io_, little, "abc", 80); }),
              std::string("\3\0\0\0abc", 7));
    EXPECT_EQ(written([&] { return zotwriteHdrString(io_, IO_FORMATTED, "abc", 5); }), "abc  \n");
    EXPECT_EQ(header_read(std::string("\0\0\0\4ab  ", 8), big, 4), "'ab'");
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(header_read(std::string("\5\0\0\0abcde", 9), little, 4), "code 14");
    EXPECT_EQ(take_messages(),
              "zotreadHdrString: not enough buffer space for string: have 5, require > 5\n");
    EXPECT_EQ(header_read("\xff\xff\xff\xff", little, 4), "code 14");
    EXPECT_EQ(header_read(std::string("\3\0\0\0ab", 6), little, 4), "code 10");
    EXPECT_EQ(header_read("\3", little, 4), "code 10");
}

TEST_F(ZotPrimitives, Offsets)
{
    EXPECT_EQ(offset_written(IO_FORMATTED, 42), "                  42\n");
    EXPECT_EQ(offset_written(big, 0x102), std::string("\0\0\1\2", 4));
    EXPECT_EQ(offset_written(little, 0x102), std::string("\2\1\0\0", 4));
    EXPECT_EQ(offset_written(wide, 0x102), std::string("\0\0\0\0\0\0\1\2", 8));
    io_.offset_width = 10;
    EXPECT_EQ(offset_written(IO_FORMATTED, 9999999999), "9999999999\n");
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(offset_written(IO_FORMATTED, 10000000000), "code 15");
    EXPECT_EQ(take_messages(), "writeOffset: offset 10000000000 too large for current offset format"
                               " 10.  Possibly a dataset >2Gb.\n");
    EXPECT_EQ(offset_written(big, 2147483648), "code 15");
    EXPECT_EQ(take_messages(), "writeOffset: offset 2147483648 too large for integer,\nwould be"
                               " written as -2147483648.  Possibly a dataset >2Gb.\n");
    for (char letter : {'D', 'd', 'X', 'x'}) {
        EXPECT_EQ(offset_written({letter, '5'}, 1), "code 15");
        EXPECT_EQ(take_messages(),
                  std::string("zotwriteOffset: bad dataset format ") + letter + "5\n");
    }
}

TEST_F(ZotPrimitives, SwappedOffsetsAreTraced)
{
    env_.variables["ZOT_IO_TRACE"] = "";
    offset_written(little, 1);
    EXPECT_EQ(env_.trace, "");
    offset_written({'L', '3'}, 1);
    EXPECT_EQ(env_.trace, "TRACE> zotwriteOffset: byte-swapping offset for format L3\n");
}

TEST_F(ZotPrimitives, ReadingOffsets)
{
    auto read = [&](const std::string &bytes, format_code format) {
        open(bytes);
        std::int64_t offset = 0;
        int code = zotreadOffset(io_, format, offset);
        return code == IO_OK ? std::to_string(offset) : "code " + std::to_string(code);
    };
    EXPECT_EQ(read("                  42\n", IO_FORMATTED), "42");
    EXPECT_EQ(read(std::string("\xff\xff\xff\xfe", 4), big), "-2");
    EXPECT_EQ(read(std::string("\0\0\0\0\0\0\1\2", 8), wide), "258");
    EXPECT_EQ(read("                 42\n", IO_FORMATTED), "code 10");
    EXPECT_EQ(read("                  4x\n", IO_FORMATTED), "code 10");
    EXPECT_EQ(read("99999999999999999999\n", IO_FORMATTED), "code 10");
    EXPECT_EQ(read("                  42", IO_FORMATTED), "code 10");
    EXPECT_EQ(read("abc", big), "code 10");
}

} // namespace
