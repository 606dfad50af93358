// Tests records: their bytes as text and binary, and lines that are refused.
#include "io/Src/Main/structure_data.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

class StructureData : public ::testing::Test
{
protected:
    StructureData() : report_(env_)
    {
        report_.set_routine(collect_message);
        take_messages();
    }

    data_shape shape_of(const char *type, std::int32_t count, format_code format)
    {
        data_shape shape;
        shape.format = format;
        shape.count = count;
        EXPECT_EQ(parseStructure(report_, type, shape.type), IO_OK);
        return shape;
    }

    void open(const std::string &bytes)
    {
        env_["file"] = bytes;
        io_.stream = io_stream(env_.open("file", io_open::update));
        io_.report = &report_;
    }

    int read(const char *type, const std::string &bytes)
    {
        open(bytes);
        data_shape shape = shape_of(type, 1, IO_FORMATTED);
        element_storage storage;
        EXPECT_TRUE(storage.allocate(total_counts(shape.type, 1), shape.type.string_slot()));
        return read_data(io_, shape, storage.data());
    }

    io_memory_env env_;
    io_reporter report_;
    zot_io io_;
};

TEST_F(StructureData, ARecordIsALineWithEscAfterEveryItem)
{
    open("");
    data_shape shape = shape_of("STRC{STRI:5 INTR:2 CHAR:2 REAL:1}", 1, IO_FORMATTED);
    char string[6] = "a\nb  ";
    char chars[] = {'x', '\x1b'};
    std::int32_t integers[] = {7, -1};
    float real = 1.5F;
    IO_data data;
    data.strings = string;
    data.strings_size = 1;
    data.chars = chars;
    data.chars_size = 2;
    data.integers = integers;
    data.integers_size = 2;
    data.reals = &real;
    data.reals_size = 1;
    ASSERT_EQ(write_data(io_, shape, data), IO_OK);
    ASSERT_TRUE(io_.stream.flush());
    EXPECT_EQ(env_["file"],
              "a\x1b         7\x1b        -1\x1bx\x1b \x1b   1.50000000000E+00\x1b\n");
}

TEST_F(StructureData, BinaryRecordsHaveNoGaps)
{
    open("");
    data_shape shape = shape_of("STRC{CHAR:1 DBLE:1 INTR:1}", 2, {'u', '5'});
    char chars[] = {'x', 'y'};
    double doubles[] = {1.5, 0};
    std::int32_t integers[] = {1, 2};
    IO_data data;
    data.chars = chars;
    data.chars_size = 2;
    data.doubles = doubles;
    data.doubles_size = 2;
    data.integers = integers;
    data.integers_size = 2;
    ASSERT_EQ(write_data(io_, shape, data), IO_OK);
    ASSERT_TRUE(io_.stream.flush());
    EXPECT_EQ(env_["file"], std::string("x\0\0\0\0\0\0\xf8\x3f\1\0\0\0"
                                        "y\0\0\0\0\0\0\0\0\2\0\0\0",
                                        26));
}

TEST_F(StructureData, BadLines)
{
    EXPECT_EQ(read("STRC{INTR:1 CHAR:1}", "         1\x1bx\x1b\n"), IO_OK);
    EXPECT_EQ(read("STRC{INTR:2}", "         1\x1b         2\n"), IO_BAD_STRING);
    EXPECT_EQ(take_messages(), "read_data: no string terminator to seperate different data\n");
    EXPECT_EQ(read("STRC{INTR:1}", "       one\x1b\n"), IO_READ_ERROR);
    EXPECT_EQ(read("STRC{INTR:1}", "         1\x1b  x\n"), IO_READ_ERROR);
    EXPECT_EQ(read("STRC{STRI:3}", "abcd\x1b\n"), IO_NO_ROOM);
    EXPECT_EQ(read("STRC{CHAR:1}", "ab\x1b\n"), IO_READ_ERROR);
    EXPECT_EQ(read("STRC{INTR:1}", "         1\x1b"), IO_READ_ERROR);
}

} // namespace
