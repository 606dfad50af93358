// Tests arrays of each type: the bytes in the file and the values read from them.
#include "io/Src/Main/data_io.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

/// Every format that data can be written in.
class DataIo : public ::testing::TestWithParam<const char *>
{
protected:
    DataIo() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }

    std::string write(const char *type, std::int32_t count, IO_data data)
    {
        io_header_storage header = named_header("A", "B", type);
        io_set_text(header.format, GetParam());
        header.count = count;
        header.when = when_++;
        if (int code = client_.request(IO_WRITE_PRIMARY_DS, header.header(), data)) {
            return "code " + std::to_string(code);
        }
        return client_.read("A", "B", header.when);
    }

    io_memory_env env_;
    io_client client_;
    std::int32_t when_ = 1;
};

TEST_P(DataIo, Integers)
{
    std::vector<std::int32_t> values = {0, 1, -1, std::numeric_limits<std::int32_t>::max(),
                                        std::numeric_limits<std::int32_t>::min()};
    IO_data data;
    data.integers = values.data();
    data.integers_size = 5;
    EXPECT_EQ(write("INTR", 5, data), "0 1 -1 2147483647 -2147483648");
    EXPECT_EQ(write("INTR", 0, data), "");
    EXPECT_EQ(write("INTR", 6, data), "code 14");
}

TEST_P(DataIo, RealsAndDoubles)
{
    std::vector<float> reals = {1.5F, -2.25F, 0};
    std::vector<double> doubles = {1e10, -0.5, 3};
    IO_data data;
    data.reals = reals.data();
    data.reals_size = 3;
    data.doubles = doubles.data();
    data.doubles_size = 3;
    EXPECT_EQ(write("REAL", 3, data), "1.5 -2.25 0");
    EXPECT_EQ(write("DBLE", 3, data), "10000000000 -0.5 3");
}

TEST_P(DataIo, Logicals)
{
    std::vector<std::uint8_t> values(150, 0);
    values[0] = 1;
    values[1] = 200;
    IO_data data;
    data.logicals = values.data();
    data.logicals_size = 150;
    std::string expected = "1 1";
    for (int i = 2; i < 150; i++) {
        expected += " 0";
    }
    EXPECT_EQ(write("LOGL", 3, data), "1 1 0");
    EXPECT_EQ(write("LOGL", 150, data), expected);
}

TEST_P(DataIo, Characters)
{
    std::string text = "ab c";
    IO_data data;
    data.chars = text.data();
    data.chars_size = 4;
    EXPECT_EQ(write("CHAR", 4, data), "a b   c");
    EXPECT_EQ(write("CHAR", 0, data), "");
}

TEST_P(DataIo, StringsLoseOnlyTrailingSpaces)
{
    std::vector<char> slots(3 * 11);
    std::string_view(" a b   ").copy(slots.data(), 10);
    std::string_view("0123456789").copy(slots.data() + 22, 10);
    IO_data data;
    data.string_slot = 11;
    data.strings = slots.data();
    data.strings_size = 3;
    EXPECT_EQ(write("STRI:10", 3, data), "\" a b\" \"\" \"0123456789\"");
}

TEST_P(DataIo, CommandTextOfEightyCharacters)
{
    std::string longest(80, 'x');
    ASSERT_EQ(client_.write_strings("G/COMMANDS", "EVERY", 0, {"FLOW:", "  A = 1 ", longest, ""},
                                    GetParam()),
              IO_OK);
    EXPECT_EQ(client_.read("G/COMMANDS", "EVERY", -1),
              "\"FLOW:\" \"  A = 1\" \"" + longest + "\" \"\"");
}

TEST_P(DataIo, ManyNumbers)
{
    std::vector<double> values(1000);
    std::string expected;
    for (std::size_t i = 0; i < values.size(); i++) {
        values[i] = static_cast<double>(i % 17);
        expected += (i == 0 ? "" : " ") + std::to_string(i % 17);
    }
    ASSERT_EQ(client_.write_doubles("A", "B", 1, values, GetParam()), IO_OK);
    EXPECT_EQ(client_.read("A", "B", 1), expected);
}

TEST_P(DataIo, RecordsOfEveryType)
{
    std::vector<char> strings(4 * 7);
    std::string_view("one").copy(strings.data(), 6);
    std::string_view("twotwo").copy(strings.data() + 7, 6);
    std::string_view("six").copy(strings.data() + 21, 6);
    std::string chars = "abcd";
    std::vector<std::int32_t> integers = {1, -2, 3, 4};
    std::vector<float> reals = {1.5F, 2.5F};
    std::vector<double> doubles = {-1, -2};
    std::vector<std::uint8_t> logicals = {1, 0};
    IO_data data;
    data.strings = strings.data();
    data.strings_size = 4;
    data.chars = chars.data();
    data.chars_size = 4;
    data.integers = integers.data();
    data.integers_size = 4;
    data.reals = reals.data();
    data.reals_size = 2;
    data.doubles = doubles.data();
    data.doubles_size = 2;
    data.logicals = logicals.data();
    data.logicals_size = 2;
    data.string_slot = 7;
    EXPECT_EQ(write("STRC{STRI:3 INTR:2 STRI:2:3 CHAR:2 REAL:1 DBLE:1 LOGL:1}", 2, data),
              "\"one\" \"twotwo\" \"\" \"six\" a b c d 1 -2 3 4 1.5 2.5 -1 -2 1 0");
}

INSTANTIATE_TEST_SUITE_P(Formats, DataIo, ::testing::Values("F", "u", "u5", "l", "l9"));

TEST(DataIoBytes, BinaryStringsArePaddedWithSpaces)
{
    io_memory_env env;
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    auto data_of = [&](const char *type) {
        io_header_storage header = named_header("A", "B", type);
        io_set_text(header.format, "u");
        header.count = 2;
        char strings[12] = "ab";
        IO_data data;
        data.strings = strings;
        data.strings_size = 2;
        data.string_slot = 6;
        EXPECT_EQ(client.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
        std::size_t start = env["f"].rfind("*DATA") + 5;
        return env["f"].substr(start, env["f"].rfind("*ENDDATASET") - start);
    };
    EXPECT_EQ(data_of("STRI:5"), "ab        ");
    EXPECT_EQ(data_of("STRC{STRI:5}"), "ab        ");
}

/// The library never writes new big-endian data, so the test makes it byte by byte.
std::string big_endian_dataset(char letter, const std::string &type, const std::string &count,
                               const std::string &data)
{
    auto number = [&](std::size_t value, int bytes) {
        std::string text;
        for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
            text += static_cast<char>(value >> shift);
        }
        return text;
    };
    auto counted = [&](const std::string &text) { return number(text.size(), 4) + text; };
    std::string inner = "*DATASET" + counted("*HEADER") +
                        counted("WHAT\x1b"
                                "A") +
                        counted("WHERE\x1b"
                                "B") +
                        counted("WHEN\x1b"
                                "1") +
                        counted("NUMATTRB\x1b"
                                "0") +
                        counted("DATATYPE\x1b" + type) + counted("NUMBER\x1b" + count) +
                        counted("*DATA") + data + "*ENDDATASET";
    std::string length = number(inner.size(), letter == 'L' ? 8 : 4);
    return "*INFO\n                   0\n*ENDINFO\n" + std::string(1, letter) + " \n" + length +
           inner + length;
}

TEST(DataIoForeign, BigEndianFilesAreRead)
{
    for (char letter : {'U', 'L'}) {
        io_memory_env env;
        io_client client(env);
        env["f"] =
            big_endian_dataset(letter, "INTR", "2", std::string("\0\0\1\2\xff\xff\xff\xff", 8));
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        EXPECT_EQ(client.read("A", "B", 1), "258 -1");
        env["f"] = big_endian_dataset(letter, "DBLE", "1", std::string("\x3f\xf8\0\0\0\0\0\0", 8));
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        EXPECT_EQ(client.read("A", "B", 1), "1.5");
    }
}

TEST(DataIoForeign, StringsThatEndWithNul)
{
    io_memory_env env;
    io_client client(env);
    env["f"] = big_endian_dataset('U', "STRI:5", "2", std::string("ab \0xcd\0\0\0", 10));
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client.read("A", "B", 1), "\"ab\" \"cd\"");
}

TEST(DataIoForeign, CharactersOfAShortLine)
{
    io_memory_env env;
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    io_header_storage header = named_header("A", "B", "CHAR");
    io_set_text(header.format, "F");
    header.count = 4;
    char chars[] = {'a', 'b', ' ', ' '};
    IO_data data;
    data.chars = chars;
    data.chars_size = 4;
    header.when = 1;
    ASSERT_EQ(client.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
    EXPECT_EQ(client.read("A", "B", 1), "a b    ");
}

TEST(DataIoForeign, CountsThatAreTooLargeForTheFile)
{
    for (const char *type : {"INTR", "STRI", "CHAR", "STRC{DBLE:2000000000 STRI:2000000000}"}) {
        io_memory_env env;
        io_client client(env);
        env["f"] = big_endian_dataset('U', type, "2000000000", std::string(16, 'x'));
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        take_messages();
        EXPECT_EQ(client.read("A", "B", 1), "code 10") << type;
        EXPECT_EQ(take_messages(),
                  "read_data: the header claims more data than the 31 bytes that are"
                  " left\niocnt: read data failed\n");
    }
}

TEST(DataIoForeign, DataThatEndsEarlierThanItsLengthSays)
{
    io_memory_env env;
    io_client client(env);
    env["f"] = big_endian_dataset('U', "INTR", "1", std::string(8, 'x'));
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    std::int64_t offsets[2] = {client.position("A", "B", 1), 0};
    std::int32_t value = 99;
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = &value;
    data.integers_size = 1;
    io_header_storage header;
    take_messages();
    EXPECT_EQ(client.request(IO_READ_LOCATED_DS, header.header(), data), IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(),
              "read_located_dataset_as: bad data set end tag: expected *ENDDATASET got"
              " \"xxxx*ENDDAT\"\niocnt: read data failed\n");
    EXPECT_EQ(value, 0); // a failed read returns no data
}

/// The index is correct, so the reader is the first to find the damage.
TEST(DataIoForeign, DatasetsThatDifferFromTheIndex)
{
    io_memory_env env;
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client.write_integers("A", "B", 1, {1, 2, 3}, "u"), IO_OK);
    ASSERT_EQ(client.write_integers("T", "B", 1, {1, 2, 3}, "F"), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    const std::string whole = env["f"];
    constexpr std::size_t binary = 36;
    std::size_t text = whole.find("F \n");
    auto said = [&](const char *what, std::size_t at, const std::string &bytes) {
        env["f"] = whole;
        env["f"].replace(at, bytes.size(), bytes);
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        take_messages();
        std::string code = client.read(what, "B", 1) + ", ";
        return code + take_messages();
    };
    auto starts = [](const std::string &text_said, const std::string &start) {
        return text_said.compare(0, start.size(), start) == 0 ? "" : text_said;
    };
    const std::string bad_length = "code 20, read_located_dataset_start: bad dataset length ";
    EXPECT_EQ(starts(said("A", binary + 2, " "), "code 10, read_located_dataset_start: the data set"
                                                 " location is incorrect (invalid format char 'u'"),
              "");
    EXPECT_EQ(starts(said("A", binary + 3, std::string("\0\0\0\1", 4)), bad_length + "16777216\n"),
              "");
    EXPECT_EQ(starts(said("A", binary + 3, std::string("\0\0\0\0", 4)), bad_length + "0\n"), "");
    EXPECT_EQ(starts(said("A", binary + 3, "\xff\xff\xff\xff"), bad_length + "-1\n"), "");
    EXPECT_EQ(starts(said("A", binary + 3, std::string("\x32\0\0\0", 4)), bad_length + "50\n"), "");
    EXPECT_EQ(starts(said("T", whole.find("NUMATTRB\x1b", text) + 9, "100001"),
                     "code 15, read_header: bad numattrb record 100001 in f\n"),
              "");
}

TEST(DataIoForeign, APlaceWithoutADataset)
{
    io_memory_env env;
    io_client client(env);
    env["f"] = big_endian_dataset('U', "INTR", "1", std::string(4, 'x'));
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    take_messages();
    EXPECT_EQ(client.read_at(0, "INTR"), "code 10");
    EXPECT_EQ(take_messages(), "read_located_dataset_start: the data set location is incorrect"
                               " (invalid format char '*'\niocnt: read data failed\n");
    EXPECT_EQ(client.read_at(-1, "INTR"), "code 8");
    EXPECT_EQ(client.read_at(1000000, "INTR"), "code 10");
    EXPECT_NE(
        take_messages().find("read_located_dataset_start: short read 0 reading dataset format"),
        std::string::npos);
}

} // namespace
