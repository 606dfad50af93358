// Tests the requests of clients: checks, codes, messages, and whole sessions.
#include "io/Src/Main/iocntc.h"

#include "io/Src/Main/request_table.h"
#include "io/testing/io_failing_env.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr auto no_request = static_cast<io_request>(99);

class Iocntc : public ::testing::Test
{
protected:
    Iocntc() : session_(env_), client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(client_.write_strings("G/COMMANDS", "EVERY", 0, {"FLOW:", "END"}), IO_OK);
        EXPECT_EQ(client_.write_integers("I", "P", 1, {1, 2, 3, 4, 5, 6, 7}, "u"), IO_OK);
        EXPECT_EQ(client_.write_doubles("D", "P", 1, std::vector<double>(250, 0.5)), IO_OK);
        EXPECT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
        take_messages();
    }

    int ask(io_request number, IO_header *header, IO_data *data)
    {
        take_messages();
        return session_.request(number, collect_message, header, data);
    }

    void open()
    {
        IO_data data;
        data.filename = "f";
        ASSERT_EQ(ask(IO_OPEN_PRIMARY, nullptr, &data), IO_OK);
        ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    }

    io_memory_env env_;
    io_session session_;
    io_client client_;
};

TEST_F(Iocntc, ANullRoutineGivesNineteenWithoutAMessage)
{
    EXPECT_EQ(iocntc(99, nullptr, nullptr, nullptr), IO_NO_ROUTINE);
    EXPECT_EQ(session_.request(IO_OPEN_PRIMARY, nullptr, nullptr, nullptr), IO_NO_ROUTINE);
    EXPECT_EQ(env_.errors, "");
}

TEST_F(Iocntc, TheNumbersThatClientsSend)
{
    std::string text;
    for (const request_traits &traits : request_table) {
        EXPECT_EQ(&traits_of(traits.request), &traits) << traits.name;
        text += std::to_string(traits.request) + " " + traits.name + "\n";
    }
    EXPECT_EQ(text, "0 IO_OPEN_PRIMARY\n"
                    "1 IO_CLOSE_PRIMARY\n"
                    "2 IO_OPEN_PRIMARY_WRITE\n"
                    "3 IO_OPEN_SECONDARY\n"
                    "4 IO_CLOSE_SECONDARY\n"
                    "5 IO_WRITE_PRIMARY_DS\n"
                    "6 IO_WRITE_SECONDARY_DS\n"
                    "7 IO_LOCATE_PRIMARY\n"
                    "8 IO_LOCATE_SECONDARY\n"
                    "9 IO_DELETE_PRIMARY_DS\n"
                    "10 IO_READ_LOCATED_DS\n"
                    "11 IO_READ_HEADER\n"
                    "12 IO_WRITE_HEADER\n"
                    "13 IO_READ_DATA\n"
                    "14 IO_WRITE_DATA\n"
                    "15 IO_END_DATASET\n"
                    "16 IO_COPY_DATASET\n"
                    "17 IO_COPY_ALLVALID_DS\n"
                    "18 IO_READ_BLOCK\n"
                    "19 IO_COPY_WHEN0_DS\n"
                    "20 IO_COPY_DS_COMPRESS_WHEN\n"
                    "39 IO_OPEN_TEXT\n"
                    "43 IO_READ_COMPRESSED\n"
                    "44 IO_WRITE_COMPRESSED\n"
                    "45 IO_READ_INTEGERS\n"
                    "46 IO_READ_REALS\n"
                    "48 IO_WRITE_TEXT\n"
                    "51 IO_CLOSE_TEXT\n");
    EXPECT_EQ(&traits_of(no_request), &unknown_request);
}

TEST_F(Iocntc, TheTableHasEveryRequest)
{
    std::int64_t offsets[2] = {};
    std::int32_t whens[1] = {};
    char strings[2 * IO_STRING_SLOT];
    io_header_storage storage = named_header("A", "B");
    for (std::uint32_t number = 0; number < 60; number++) {
        auto request = static_cast<io_request>(number);
        IO_header header = storage.header();
        IO_data data;
        data.offsets = offsets;
        data.offsets_size = 2;
        data.integers = whens;
        data.strings = strings;
        bool unknown = &traits_of(request) == &unknown_request;
        EXPECT_EQ(ask(request, &header, &data) == IO_UNKNOWN_REQUEST, unknown) << number;
    }
}

TEST_F(Iocntc, TheChecksAreInTheirOrder)
{
    IO_data data;
    io_header_storage storage;
    IO_header header = storage.header();
    EXPECT_EQ(ask(no_request, nullptr, nullptr), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), "iocntc: IO_data structure is null\n");
    EXPECT_EQ(ask(no_request, nullptr, &data), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), "iocntc: IO_header structure is null\n");
    EXPECT_EQ(ask(no_request, &header, &data), IO_UNKNOWN_REQUEST);
    EXPECT_EQ(take_messages(), "iocnt: unknown request\n");
    for (std::uint32_t number = 0; number < 60; number++) {
        bool needs_none =
            std::strchr("\1\2\3\4\15\16\17\21\47\55\56\60\63", static_cast<int>(number)) != nullptr;
        static_cast<void>(ask(static_cast<io_request>(number), nullptr, &data));
        EXPECT_EQ(take_messages().find("iocntc: IO_header structure is null\n") == 0, !needs_none)
            << number;
    }
}

TEST_F(Iocntc, EveryPartOfAHeaderIsNeeded)
{
    IO_data data;
    io_header_storage storage;
    auto refused = [&](auto change) {
        IO_header header = storage.header();
        change(header);
        return ask(IO_WRITE_PRIMARY_DS, &header, &data) == IO_NO_ROOM &&
               take_messages() == "iocntc: header input is wrong\n";
    };
    EXPECT_TRUE(refused([](IO_header &header) { header.what = nullptr; }));
    EXPECT_TRUE(refused([](IO_header &header) { header.where = nullptr; }));
    EXPECT_TRUE(refused([](IO_header &header) { header.when = nullptr; }));
    EXPECT_TRUE(refused([](IO_header &header) { header.count = nullptr; }));
    EXPECT_TRUE(refused([](IO_header &header) { header.type = nullptr; }));
    EXPECT_TRUE(refused([](IO_header &header) { header.blockfactor = nullptr; }));
    storage.attribute_count = 1;
    EXPECT_TRUE(refused([](IO_header &header) { header.attributes = nullptr; }));
}

TEST_F(Iocntc, ArraysThatRequestsNeed)
{
    IO_data data;
    io_header_storage storage;
    IO_header header = storage.header();
    for (io_request number : {IO_LOCATE_PRIMARY, IO_LOCATE_SECONDARY, IO_READ_LOCATED_DS,
                              IO_READ_HEADER, IO_WRITE_HEADER, IO_COPY_DATASET, IO_READ_BLOCK,
                              IO_READ_COMPRESSED, IO_WRITE_COMPRESSED}) {
        EXPECT_EQ(ask(number, &header, &data), IO_NO_ROOM);
        EXPECT_EQ(take_messages(), "iocntc: offset array input is wrong\n") << number;
    }
    std::int64_t offsets[2] = {};
    std::int32_t whens[1] = {};
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = whens;
    data.integers_size = 1;
    for (io_request number : {IO_LOCATE_PRIMARY, IO_LOCATE_SECONDARY}) {
        EXPECT_EQ(ask(number, &header, &data), IO_NO_ROOM);
        EXPECT_EQ(take_messages(), "iocntc: stringarray or intrarray is wrong\n");
    }
}

TEST_F(Iocntc, NoOpenFile)
{
    char strings[2 * IO_STRING_SLOT];
    std::int64_t offsets[2] = {};
    std::int32_t whens[1] = {};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = whens;
    data.integers_size = 1;
    data.strings = strings;
    data.strings_size = 2;
    io_header_storage storage = named_header("A", "B");
    IO_header header = storage.header();
    for (io_request number :
         {IO_CLOSE_PRIMARY, IO_WRITE_PRIMARY_DS, IO_LOCATE_PRIMARY, IO_DELETE_PRIMARY_DS,
          IO_READ_LOCATED_DS, IO_READ_HEADER, IO_WRITE_HEADER, IO_READ_DATA, IO_WRITE_DATA,
          IO_END_DATASET, IO_COPY_DATASET, IO_COPY_ALLVALID_DS, IO_READ_BLOCK, IO_COPY_WHEN0_DS,
          IO_COPY_DS_COMPRESS_WHEN, IO_READ_COMPRESSED, IO_WRITE_COMPRESSED}) {
        EXPECT_EQ(ask(number, &header, &data), IO_NO_OPEN_FILE) << number;
        EXPECT_EQ(take_messages(), "iocnt: no primary file is opened\n") << number;
    }
    for (io_request number : {IO_CLOSE_SECONDARY, IO_WRITE_SECONDARY_DS, IO_LOCATE_SECONDARY}) {
        EXPECT_EQ(ask(number, &header, &data), IO_NO_OPEN_FILE) << number;
        EXPECT_EQ(take_messages(), "iocnt: no secondary file is opened\n") << number;
    }
    for (io_request number : {IO_READ_INTEGERS, IO_READ_REALS, IO_WRITE_TEXT, IO_CLOSE_TEXT}) {
        EXPECT_EQ(ask(number, &header, &data), IO_NO_OPEN_FILE) << number;
        EXPECT_EQ(take_messages(), "iocnt: no plain text file is opened\n") << number;
    }
}

TEST_F(Iocntc, ReadingTheCommandData)
{
    IO_data data;
    const char *name = "f and more";
    data.filename = name;
    data.filename_length = 1;
    ASSERT_EQ(ask(IO_OPEN_PRIMARY, nullptr, &data), IO_OK);
    io_header_storage storage = named_header("G/COMMANDS", "EVERY", "STRI");
    IO_header header = storage.header();
    std::vector<char> names(40 * IO_STRING_SLOT);
    std::int64_t offsets[40] = {};
    std::int32_t whens[20] = {};
    data.strings = names.data();
    data.strings_size = 40;
    data.integers = whens;
    data.integers_size = 20;
    data.offsets = offsets;
    data.offsets_size = 40;
    ASSERT_EQ(ask(IO_LOCATE_PRIMARY, &header, &data), IO_OK);
    EXPECT_EQ(data.matches, 1);
    data.strings = nullptr;
    data.strings_size = 0;
    ASSERT_EQ(ask(IO_READ_LOCATED_DS, &header, &data), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(data.strings_size, 2);
    EXPECT_EQ(storage.count, 2);
    std::vector<char> lines(2 * IO_STRING_SLOT);
    data.strings = lines.data();
    ASSERT_EQ(ask(IO_READ_LOCATED_DS, &header, &data), IO_OK);
    EXPECT_STREQ(lines.data(), "FLOW:");
    EXPECT_STREQ(lines.data() + IO_STRING_SLOT, "END");
    EXPECT_EQ(ask(IO_CLOSE_PRIMARY, nullptr, &data), IO_OK);
}

TEST_F(Iocntc, CodeSeventeenIsReportedWithItsText)
{
    open();
    take_messages();
    EXPECT_EQ(client_.locate("NOT", "THERE", -1), "code 17");
    EXPECT_EQ(take_messages(), "Could not find requested dataset.  File could be invalid.\n");
}

TEST_F(Iocntc, HeaderThenData)
{
    open();
    std::int64_t offsets[2] = {client_.position("I", "P", 1), 0};
    io_header_storage storage;
    IO_header header = storage.header();
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    EXPECT_EQ(ask(IO_READ_DATA, nullptr, &data), IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(), "iocnt: no dataset header has been read\n");
    ASSERT_EQ(ask(IO_READ_HEADER, &header, &data), IO_OK);
    EXPECT_STREQ(storage.what, "I");
    EXPECT_STREQ(storage.type, "INTR");
    EXPECT_STREQ(storage.format, "u ");
    EXPECT_EQ(storage.count, 7);
    EXPECT_EQ(storage.blockfactor, 1);
    EXPECT_EQ(ask(IO_READ_DATA, nullptr, &data), IO_NO_ROOM);
    EXPECT_EQ(data.integers_size, 7);
    std::int32_t values[7] = {};
    data.integers = values;
    EXPECT_EQ(ask(IO_READ_DATA, nullptr, &data), IO_OK);
    EXPECT_EQ(values[6], 7);
    EXPECT_EQ(ask(IO_READ_DATA, nullptr, &data), IO_BAD_FORMAT);
}

TEST_F(Iocntc, BlocksOfADataset)
{
    open();
    io_header_storage storage;
    IO_header header = storage.header();
    std::int64_t offsets[2] = {client_.position("I", "P", 1), 0};
    std::int32_t values[3] = {};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = values;
    std::string text;
    for (std::int32_t block = 0; block < 4; block++) {
        data.integers_size = 3;
        storage.count = block;
        storage.blockfactor = 3;
        ASSERT_EQ(ask(IO_READ_BLOCK, &header, &data), IO_OK);
        text += std::to_string(storage.count) + ":";
        for (std::int32_t i = 0; i < storage.count; i++) {
            text += " " + std::to_string(values[i]);
        }
        text += "\n";
    }
    EXPECT_EQ(text, "3: 1 2 3\n3: 4 5 6\n1: 7\n0:\n");
    storage.count = 0;
    data.integers_size = 2;
    EXPECT_EQ(ask(IO_READ_BLOCK, &header, &data), IO_NO_ROOM);
    EXPECT_EQ(data.integers_size, 3);
    offsets[0] = client_.position("D", "P", 1);
    storage.blockfactor = 1; // the dataset has 100000, so this reads all of it
    std::vector<double> doubles(250);
    data.doubles = doubles.data();
    data.doubles_size = 250;
    ASSERT_EQ(ask(IO_READ_BLOCK, &header, &data), IO_OK);
    EXPECT_EQ(storage.count, 250);
    EXPECT_EQ(storage.blockfactor, 100000);
    EXPECT_EQ(doubles[249], 0.5);
}

TEST_F(Iocntc, ReadingCompressedDataWithoutInflating)
{
    open();
    io_header_storage storage;
    IO_header header = storage.header();
    std::int64_t offsets[2] = {client_.position("D", "P", 1), 0};
    std::vector<double> values(250);
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.doubles = values.data();
    data.doubles_size = 250;
    EXPECT_EQ(ask(IO_READ_COMPRESSED, &header, &data), IO_OK);
    EXPECT_EQ(values[100], 0.5);
    offsets[0] = client_.position("I", "P", 1);
    EXPECT_EQ(ask(IO_READ_COMPRESSED, &header, &data), IO_NOT_COMPRESSED);
}

TEST_F(Iocntc, WritingDataThatIsAlreadyCompressed)
{
    IO_data data;
    data.filename = "g";
    ASSERT_EQ(ask(IO_OPEN_PRIMARY_WRITE, nullptr, &data), IO_OK);
    io_header_storage storage = named_header("A", "B", "DBLE");
    storage.count = 200;
    IO_header header = storage.header();
    std::vector<double> values(200, 1.5);
    std::int64_t offsets[2] = {};
    data.offsets = offsets;
    data.offsets_size = 2;
    data.doubles = values.data();
    data.doubles_size = 200;
    ASSERT_EQ(ask(IO_WRITE_COMPRESSED, &header, &data), IO_OK);
    EXPECT_EQ(offsets[0], 36);
    EXPECT_EQ(env_["g"].substr(36, 3), "u5\n");
    io_set_text(storage.format, "u");
    EXPECT_EQ(ask(IO_WRITE_COMPRESSED, &header, &data), IO_NOT_COMPRESSED);
    EXPECT_EQ(ask(IO_READ_COMPRESSED, &header, &data), IO_OK);
}

TEST_F(Iocntc, ADatasetInThreeRequests)
{
    IO_data data;
    data.filename = "g";
    ASSERT_EQ(ask(IO_OPEN_PRIMARY_WRITE, nullptr, &data), IO_OK);
    io_header_storage storage = named_header("A", "B", "INTR");
    storage.count = 3;
    storage.when = 4;
    IO_header header = storage.header();
    std::int64_t offsets[2] = {};
    std::int32_t values[3] = {7, 8, 9};
    data.offsets = offsets;
    data.offsets_size = 2;
    EXPECT_EQ(ask(IO_WRITE_DATA, nullptr, &data), IO_BAD_FORMAT);
    ASSERT_EQ(ask(IO_WRITE_HEADER, &header, &data), IO_OK);
    EXPECT_EQ(offsets[0], 36);
    EXPECT_EQ(ask(IO_END_DATASET, nullptr, &data), IO_BAD_FORMAT);
    EXPECT_EQ(ask(IO_WRITE_DATA, nullptr, &data), IO_NO_ROOM);
    data.integers = values;
    data.integers_size = 3;
    ASSERT_EQ(ask(IO_WRITE_DATA, nullptr, &data), IO_OK);
    ASSERT_EQ(ask(IO_END_DATASET, nullptr, &data), IO_OK);
    // Begun and not ended: as if the dataset did not exist.
    ASSERT_EQ(ask(IO_WRITE_HEADER, &header, &data), IO_OK);
    ASSERT_EQ(ask(IO_WRITE_DATA, nullptr, &data), IO_OK);
    ASSERT_EQ(ask(IO_CLOSE_PRIMARY, nullptr, &data), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "g"), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(client_.locate("*", "*", -1), "A B 4\n");
    EXPECT_EQ(client_.read("A", "B", 4), "7 8 9");
}

TEST_F(Iocntc, AnotherWriteDropsAnUnfinishedDataset)
{
    IO_data data;
    data.filename = "g";
    ASSERT_EQ(ask(IO_OPEN_PRIMARY_WRITE, nullptr, &data), IO_OK);
    io_header_storage storage = named_header("A", "B", "INTR");
    storage.count = 3;
    storage.when = 4;
    IO_header header = storage.header();
    std::int64_t offsets[2] = {};
    std::int32_t values[3] = {7, 8, 9};
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = values;
    data.integers_size = 3;
    ASSERT_EQ(ask(IO_WRITE_HEADER, &header, &data), IO_OK);
    ASSERT_EQ(ask(IO_WRITE_DATA, nullptr, &data), IO_OK);
    storage.when = 5;
    ASSERT_EQ(ask(IO_WRITE_PRIMARY_DS, &header, &data), IO_OK);
    EXPECT_EQ(ask(IO_END_DATASET, nullptr, &data), IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(), "iocnt: no dataset data has been written\n");
    ASSERT_EQ(ask(IO_CLOSE_PRIMARY, nullptr, &data), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "g"), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "A B 5\n");
    EXPECT_EQ(client_.position("A", "B", 5), 36);
    EXPECT_EQ(client_.read("A", "B", 5), "7 8 9");
}

TEST_F(Iocntc, AnEmptyDatasetNeedsNoData)
{
    IO_data data;
    data.filename = "g";
    ASSERT_EQ(ask(IO_OPEN_PRIMARY_WRITE, nullptr, &data), IO_OK);
    io_header_storage storage = named_header("A", "B", "INTR");
    storage.when = 4;
    IO_header header = storage.header();
    std::int64_t offsets[2] = {};
    data.offsets = offsets;
    data.offsets_size = 2;
    ASSERT_EQ(ask(IO_WRITE_HEADER, &header, &data), IO_OK);
    ASSERT_EQ(ask(IO_END_DATASET, nullptr, &data), IO_OK);
    ASSERT_EQ(ask(IO_CLOSE_PRIMARY, nullptr, &data), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "g"), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "A B 4\n");
    EXPECT_EQ(client_.read("A", "B", 4), "");
}

/// The library must not return data that it kept from another file.
TEST_F(Iocntc, AnotherFileStartsWithoutKeptData)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    ASSERT_EQ(client_.write_integers("I", "P", 1, {11, 12, 13}, "u"), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "h"), IO_OK);
    ASSERT_EQ(client_.write_integers("I", "P", 1, {21, 22, 23}, "u"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    io_header_storage storage;
    IO_header header = storage.header();
    std::int64_t offsets[2] = {36, 0};
    std::int32_t values[3] = {};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = values;
    auto first_block = [&](const char *file) {
        data.filename = file;
        EXPECT_EQ(ask(IO_OPEN_PRIMARY, nullptr, &data), IO_OK);
        EXPECT_EQ(ask(IO_READ_DATA, nullptr, &data), IO_BAD_FORMAT);
        data.integers_size = 3;
        storage.count = 0;
        storage.blockfactor = 3;
        EXPECT_EQ(ask(IO_READ_BLOCK, &header, &data), IO_OK);
        EXPECT_EQ(ask(IO_READ_HEADER, &header, &data), IO_OK);
        return values[0];
    };
    EXPECT_EQ(first_block("g"), 11);
    EXPECT_EQ(first_block("h"), 21);
}

/// The code is that of the failed write, even if later calls fail too.
TEST_F(Iocntc, AFailedWriteOfCompressedDataIsAWriteError)
{
    io_failing_env failing(env_);
    io_client client(failing);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    io_header_storage storage = named_header("A", "B", "DBLE");
    storage.count = 200;
    std::vector<double> values(200, 1.5);
    std::int64_t offsets[2] = {};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.doubles = values.data();
    data.doubles_size = 200;
    failing.writes_only(true);
    for (int number : {EIO, ENOSPC, EDQUOT}) {
        for (bool for_good : {false, true}) {
            for (io_request request : {IO_WRITE_COMPRESSED, IO_WRITE_PRIMARY_DS}) {
                failing.fail(2, number, for_good);
                take_messages();
                EXPECT_EQ(client.request(request, storage.header(), data), IO_WRITE_ERROR);
                EXPECT_EQ(take_messages().find("write_compressed_dataarray: (fwrite failed)"), 0U);
            }
        }
    }
}

TEST_F(Iocntc, CompressedRequestsReportAWrongFormat)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    std::vector<double> values(200, 1.5);
    auto asked = [&](const char *format, io_request request) {
        io_header_storage storage = named_header("A", "B", "DBLE");
        io_set_text(storage.format, format);
        storage.count = 200;
        storage.when = 1;
        std::int64_t offsets[2] = {};
        IO_data data;
        data.offsets = offsets;
        data.offsets_size = 2;
        data.doubles = values.data();
        data.doubles_size = 200;
        if (request == IO_READ_COMPRESSED) {
            EXPECT_EQ(client_.request(IO_WRITE_PRIMARY_DS, storage.header(), data), IO_OK);
            offsets[0] = client_.position("A", "B", 1);
        }
        take_messages();
        int code = client_.request(request, storage.header(), data);
        static_cast<void>(client_.remove("A", "B", 1));
        return code;
    };
    std::string read = "read_compressed_dataarray: bad compressed format ";
    EXPECT_EQ(asked("u", IO_READ_COMPRESSED), IO_NOT_COMPRESSED);
    EXPECT_EQ(take_messages().find(read + "u \niocnt: read compressed data failed\n"), 0U);
    EXPECT_EQ(asked("F", IO_READ_COMPRESSED), IO_BAD_FORMAT);
    EXPECT_EQ(take_messages().find(read + "F \nread_compressed_data: only supports binary data\n"),
              0U);
    EXPECT_EQ(asked("l", IO_WRITE_COMPRESSED), IO_NOT_COMPRESSED);
    EXPECT_EQ(take_messages().find(read + "l \niocnt: write compressed data failed\n"), 0U);
    EXPECT_EQ(asked("F", IO_WRITE_COMPRESSED), IO_NOT_COMPRESSED);
    EXPECT_EQ(take_messages().find(read + "F \n"), 0U);
    EXPECT_EQ(asked("u5", IO_WRITE_COMPRESSED), IO_OK);
}

/// All requests ignore white space at the end of WHAT and WHERE.
TEST_F(Iocntc, NamesAreTrimmedInEveryRequest)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    ASSERT_EQ(client_.write_integers("A \t", "B  ", 1, {1}, "u"), IO_OK);
    EXPECT_EQ(client_.locate("A  ", "B ", 1), "A B 1\n");
    EXPECT_EQ(client_.locate("A* ", "B ", 1), "A B 1\n");
    EXPECT_EQ(client_.locate("A\n", "?\t", -1), "A B 1\n");
    ASSERT_EQ(client_.request(IO_OPEN_SECONDARY, "h"), IO_OK);
    io_header_storage storage = named_header("A ", "B ");
    std::int64_t offsets[2] = {};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    EXPECT_EQ(client_.request(IO_COPY_DATASET, storage.header(), data), IO_OK);
    EXPECT_EQ(client_.locate("A ", "B ", 1, IO_LOCATE_SECONDARY), "A B 1\n");
    EXPECT_EQ(client_.remove("A  ", "B  ", 1), IO_OK);
    EXPECT_EQ(client_.locate("A", "B", 1), "code 17");
}

/// A dataset without a block factor is read in blocks of 100000.
TEST_F(Iocntc, BlocksOfADatasetWithoutABlockFactor)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    std::vector<std::int32_t> values(100003);
    for (std::size_t i = 0; i < values.size(); i++) {
        values[i] = static_cast<std::int32_t>(i);
    }
    ASSERT_EQ(client_.write_integers("A", "B", 1, values, "u"), IO_OK);
    std::int64_t offsets[2] = {client_.position("A", "B", 1), 0};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.integers = values.data();
    data.integers_size = 100000;
    io_header_storage storage;
    storage.count = 0;
    EXPECT_EQ(client_.request(IO_READ_BLOCK, storage.header(), data), IO_OK);
    EXPECT_EQ(storage.count, 100000);
    EXPECT_EQ(storage.blockfactor, 100000);
    storage.count = 1;
    storage.blockfactor = 1;
    EXPECT_EQ(client_.request(IO_READ_BLOCK, storage.header(), data), IO_OK);
    EXPECT_EQ(storage.count, 3);
    EXPECT_EQ(values[2], 100002);
}

/// The system's reason comes before the line feed at the end of the message.
TEST(Messages, TheReasonIsBeforeTheLineFeed)
{
    io_memory_env env;
    io_reporter report(env);
    report.set_routine(collect_message);
    take_messages();
    errno = EACCES;
    EXPECT_EQ(report.zotsystemErr(7, "a message\n"), 7);
    errno = EACCES;
    EXPECT_EQ(report.zotsystemErr(7, "two\nlines"), 7);
    EXPECT_EQ(take_messages(), "a message: Permission denied\ntwo\nlines: Permission denied\n");
}

TEST_F(Iocntc, SecondaryFiles)
{
    open();
    ASSERT_EQ(client_.request(IO_OPEN_SECONDARY, "g"), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1, IO_LOCATE_SECONDARY), "code 17");
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1}, nullptr, IO_WRITE_SECONDARY_DS), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1, IO_LOCATE_SECONDARY), "A B 1\n");
    EXPECT_EQ(client_.request(IO_CLOSE_SECONDARY), IO_OK);
}

TEST_F(Iocntc, TheDefaultRoutineAndTheDebugger)
{
    io_reporter report(env_);
    EXPECT_EQ(report.error(IO_BAD_FILE, "what %d", 5), IO_BAD_FILE);
    EXPECT_EQ(env_.errors, "IO: what 5\n");
    EXPECT_EQ(env_.debugger_breaks, 0);
    env_.variables["ZOT_IO_DEBUG_ERRORS"] = "";
    errno = ENOENT;
    EXPECT_EQ(report.zotsystemErr(1, "open"), 1);
    EXPECT_EQ(env_.errors, "IO: what 5\nIO: open: No such file or directory\n");
    EXPECT_EQ(env_.debugger_breaks, 1);
    errno = 0;
    EXPECT_EQ(report.zotsystemErr(1, "open"), 1);
    EXPECT_NE(env_.errors.find("IO: open: unknown error\n"), std::string::npos);
}

TEST_F(Iocntc, EveryTraceLineHasItsPrefix)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    client.locate("A*", "B", -1);
    client.write_integers("A", "B", 1, std::vector<std::int32_t>(100000, 1));
    client.write_doubles("A", "B", 1, {1}, "F");
    client.request(IO_CLOSE_PRIMARY);
    std::size_t lines = 0;
    for (std::size_t start = 0; start < env_.trace.size(); lines++) {
        EXPECT_EQ(env_.trace.compare(start, 7, "TRACE> "), 0);
        start = env_.trace.find('\n', start) + 1;
    }
    EXPECT_EQ(lines, 9U);
}

TEST_F(Iocntc, TheVariableOfTheTraceIsReadOnce)
{
    io_reporter silent(env_);
    silent.trace("one");
    env_.variables["ZOT_IO_TRACE"] = "";
    silent.trace("two");
    EXPECT_EQ(env_.trace, "");
    io_reporter speaking(env_);
    speaking.trace("three");
    env_.variables.erase("ZOT_IO_TRACE");
    speaking.trace("four\nfive\n");
    EXPECT_EQ(env_.trace, "TRACE> three\nTRACE> four\nTRACE> five\n");
}

/// A file cannot be locked for writing while others read it. The message names
/// the request.
TEST_F(Iocntc, MessagesNameTheRequestIfTheFileIsNotFree)
{
    io_client other(env_);
    ASSERT_EQ(other.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    io_header_storage storage = named_header("I", "P", "DBLE");
    storage.when = 1;
    storage.count = 100;
    IO_header header = storage.header();
    std::vector<double> values(100);
    std::int64_t offsets[2] = {};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.doubles = values.data();
    data.doubles_size = 100;
    auto named = [&](io_request number) {
        IO_data file;
        file.filename = "f";
        EXPECT_EQ(ask(IO_OPEN_PRIMARY, nullptr, &file), IO_OK);
        EXPECT_EQ(ask(number, &header, &data), IO_LOCKED) << number;
        std::string said = take_messages();
        const std::string before = "iocnt: setfilebusyflag failed when req =";
        std::size_t at = said.find(before);
        return at == std::string::npos ? said : said.substr(at + before.size());
    };
    EXPECT_EQ(named(IO_WRITE_PRIMARY_DS), "IO_WRITE_PRIMARY_DS\n");
    EXPECT_EQ(named(IO_DELETE_PRIMARY_DS), "IO_DELETE_PRIMARY_DS\n");
    EXPECT_EQ(named(IO_WRITE_HEADER), "IO_WRITE_HEADER\n");
    EXPECT_EQ(named(IO_WRITE_COMPRESSED), "IO_WRITE_COMPRESSED\niocnt: write compressed data"
                                          " failed\n");
}

TEST_F(Iocntc, DataTooLargeForNarrowLengthsGetsWideOnes)
{
    IO_data data;
    std::int64_t offsets[2] = {};
    data.filename = "g";
    data.offsets = offsets;
    data.offsets_size = 2;
    ASSERT_EQ(ask(IO_OPEN_PRIMARY_WRITE, nullptr, &data), IO_OK);
    io_header_storage storage = named_header("A", "B");
    IO_header header = storage.header();
    auto format_of = [&](const char *type, std::int32_t count, const char *format) {
        io_set_text(storage.type, type);
        io_set_text(storage.format, format);
        storage.count = count;
        EXPECT_EQ(ask(IO_WRITE_HEADER, &header, &data), IO_OK);
        return env_["g"].substr(static_cast<std::size_t>(offsets[0]), 2);
    };
    EXPECT_EQ(format_of("DBLE", 201326592, ""), "u5"); // 0x60000000 bytes
    EXPECT_EQ(format_of("DBLE", 201326593, ""), "l5");
    EXPECT_EQ(format_of("CHAR", 0x60000001, "u"), "l ");
    EXPECT_EQ(format_of("STRI", 20132659, "U"), "u ");
    EXPECT_EQ(format_of("STRI", 20132660, "U"), "l ");
    EXPECT_EQ(format_of("STRC{INTR:1 DBLE:1}", 134217728, "u7"), "u7");
    EXPECT_EQ(format_of("STRC{INTR:1 DBLE:1}", 134217729, "u7"), "l7");
    EXPECT_EQ(format_of("DBLE", 2147483647, "F"), "F ");
}

TEST(IoCodes, EachCodeHasItsText)
{
    const char *const texts[] = {
        "Successful.",
        "Could not open file.",
        "There is no open file for this operation.",
        "File not found.",
        "Disk is full.",
        "Unexpected end-of-file.",
        "Permission denied.",
        "Could not close file.",
        "Could not seek to desired location.",
        "Could not determine location in file.",
        "Error reading from disk.",
        "Error writing to disk.",
        "Error parsing IO structures.",
        "Could not find requested dataset.  File could be invalid/corrupted.",
        "Not enough allocated memory for requested IO operation.",
        "IO dataset has incorrect format.",
        "More than one dataset matching description found.",
        "Could not find requested dataset.  File could be invalid.",
        "IO error read string information.  File could be invalid.",
        "Invalid error reporting routine passed to IO module.",
        "Invalid def/res file.  File could be corrupted.",
        "File is locked.  Remove the lock (lck) file if this shouldn't be the case.",
        "Unknown IO request made",
        "Data compression failed.",
        "File does not exist.",
        "The attribute does not exist.",
        "An unknown error has occurred.",
        "Dataset could not be converted.",
        "Unable to allocate enough memory for the requested operation.",
        "Error writing compressed data.",
        "Data is not compressed.",
        "Byte swapping is not enabled.",
    };
    int code = 0;
    for (const char *text : texts) {
        EXPECT_STREQ(io_code_text(code), text) << code;
        code++;
    }
    EXPECT_EQ(code, 32);
    EXPECT_STREQ(io_code_text(32), io_code_text(26));
    EXPECT_STREQ(io_code_text(-1), io_code_text(26));
}

} // namespace
