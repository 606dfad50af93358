// Tests writing: the bytes of the file, refused headers, and writes that fail.
#include "io/Src/Main/write_dataset.h"

#include "io/testing/io_failing_env.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

class WriteDataset : public ::testing::Test
{
protected:
    WriteDataset() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }

    /// The bytes from the first dataset on.
    std::string body() { return env_["f"].substr(36); }

    io_memory_env env_;
    io_client client_;
};

TEST_F(WriteDataset, AFormattedDataset)
{
    ASSERT_EQ(client_.write_integers("A", "B", -5, {1, -2}, "F"), IO_OK);
    auto padded = [](std::string text, std::size_t width) {
        text.resize(width, ' ');
        return text + "\n";
    };
    std::string inner = "*DATASET\n*HEADER\n" +
                        padded("WHAT\x1b"
                               "A",
                               80) +
                        padded("WHERE\x1b"
                               "B",
                               80) +
                        padded("WHEN\x1b-5", 80) +
                        padded("NUMATTRB\x1b"
                               "0",
                               80) +
                        padded("DATATYPE\x1bINTR", 256) +
                        padded("NUMBER\x1b"
                               "2",
                               80) +
                        padded("BLOCKFACTOR\x1b"
                               "1",
                               80) +
                        "*DATA\n         1        -2\n*ENDDATASET\n";
    std::string length = std::string(17, ' ') + std::to_string(inner.size()) + "\n";
    EXPECT_EQ(body(), "F \n" + length + inner + length + "*CRASH\n");
}

TEST_F(WriteDataset, ABinaryDataset)
{
    ASSERT_EQ(client_.write_integers("A", "B", 5, {1, -2}, "u"), IO_OK);
    auto counted = [](const std::string &text) {
        return std::string(1, static_cast<char>(text.size())) + std::string(3, '\0') + text;
    };
    std::string inner = "*DATASET" + counted("*HEADER") +
                        counted("WHAT\x1b"
                                "A") +
                        counted("WHERE\x1b"
                                "B") +
                        counted("WHEN\x1b"
                                "5") +
                        counted("NUMATTRB\x1b"
                                "0") +
                        counted("DATATYPE\x1bINTR") +
                        counted("NUMBER\x1b"
                                "2") +
                        counted("*DATA") + std::string("\1\0\0\0\xfe\xff\xff\xff", 8) +
                        "*ENDDATASET";
    std::string length = std::string(1, static_cast<char>(inner.size())) + std::string(3, '\0');
    EXPECT_EQ(body(), "u \n" + length + inner + length + "*CRASH");
}

TEST_F(WriteDataset, ACompressedFormatHasABlockFactor)
{
    ASSERT_EQ(client_.write_integers("A", "B", 5, {1, -2}), IO_OK);
    EXPECT_EQ(body().substr(0, 3), "u5\n");
    EXPECT_NE(body().find("BLOCKFACTOR\x1b"
                          "100000"),
              std::string::npos);
}

TEST_F(WriteDataset, HeadersThatNoReaderCanFind)
{
    auto refused = [&](const std::string &what, const std::string &where) {
        take_messages();
        int code = client_.write_integers(what.c_str(), where.c_str(), 1, {1});
        return code == IO_NO_ROOM && take_messages() == "iocntc: header input is wrong\n";
    };
    EXPECT_TRUE(refused("", "B"));
    EXPECT_TRUE(refused("A", ""));
    EXPECT_TRUE(refused("A\n", "B\x1b"
                               "C"));
    EXPECT_TRUE(refused(std::string(76, 'x'), "B"));
    EXPECT_TRUE(refused("A", std::string(75, 'x')));
    EXPECT_EQ(
        client_.write_integers(std::string(75, 'x').c_str(), std::string(74, 'y').c_str(), 1, {1}),
        IO_OK);
    EXPECT_EQ(client_.write_integers("T  ", "W ", 1, {1}), IO_OK);
    EXPECT_EQ(client_.locate("T", "W", 1), "T W 1\n");
}

TEST_F(WriteDataset, RefusedFormatsDoNotChangeTheFile)
{
    std::string before = env_["f"];
    for (const char *format : {"D5", "d", "X", "x5"}) {
        EXPECT_EQ(client_.write_integers("A", "B", 1, {1}, format), IO_BAD_FORMAT) << format;
        EXPECT_NE(take_messages().find("zotwriteOffset: bad dataset format "), std::string::npos);
    }
    EXPECT_EQ(client_.write_integers("A", "B", 1, {1}, "Z"), IO_BAD_FORMAT);
    EXPECT_EQ(client_.write_integers("A", "B", 1, std::vector<std::int32_t>(100), "u0"),
              IO_COMPRESSION);
    EXPECT_EQ(env_["f"], before);
    EXPECT_EQ(client_.write_integers("A", "B", 1, std::vector<std::int32_t>(99), "u0"), IO_OK);
}

TEST_F(WriteDataset, TheEnvironmentOverridesTheFormat)
{
    env_.variables["ZOT_FORMAT"] = "F";
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1}, "u5"), IO_OK);
    EXPECT_EQ(body().substr(0, 3), "F \n");
}

TEST_F(WriteDataset, AttributesReadBackUnchanged)
{
    io_header_storage header = named_header("A", "B", "LOGL");
    io_set_text(header.attributes[0], "unit=K  ");
    io_set_text(header.attributes[1], "");
    header.attribute_count = 2;
    header.when = 3;
    IO_data data;
    ASSERT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
    std::int64_t offsets[2] = {client_.position("A", "B", 3), 0};
    io_header_storage read;
    data.offsets = offsets;
    data.offsets_size = 2;
    ASSERT_EQ(client_.request(IO_READ_HEADER, read.header(), data), IO_OK);
    EXPECT_EQ(read.attribute_count, 2);
    EXPECT_STREQ(read.attributes[0], "unit=K");
    EXPECT_STREQ(read.attributes[1], "");
    EXPECT_STREQ(read.format, "u5");
    EXPECT_EQ(read.blockfactor, 100000);
    IO_header small = read.header();
    small.attributes_size = 1;
    EXPECT_EQ(client_.request(IO_READ_HEADER, small, data), IO_NO_ROOM);
    EXPECT_EQ(read.attribute_count, 2);
}

TEST_F(WriteDataset, AnAttributeOfMoreThanEightyCharactersIsRefused)
{
    io_header_storage header = named_header("A", "B", "INTR");
    header.attribute_count = 1;
    IO_data data;
    std::fill_n(header.attributes[0], IO_STRING_SLOT, 'x');
    take_messages();
    EXPECT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_NO_ROOM);
    EXPECT_EQ(take_messages(), "iocntc: header input is wrong\n");
    header.attributes[0][80] = '\0';
    EXPECT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
    header.attributes[0][80] = ' '; // white space at the end does not count
    EXPECT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
}

TEST_F(WriteDataset, TheFirstChangeRemovesTheIndex)
{
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1}), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::size_t index = env_["f"].find("F \n");
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.remove("A", "B", 1), IO_OK);
    EXPECT_EQ(env_["f"].substr(index), "*CRASH");
}

/// Appends to a file while one write after another fails.
class FailedWrite : public ::testing::TestWithParam<bool>
{
protected:
    static constexpr int many = 30;
};

TEST_P(FailedWrite, LeavesTheEarlierDatasetsAndTheFileWhole)
{
    bool for_good = GetParam();
    int failures = 0;
    for (int call = 1; call < many; call++) {
        io_memory_env memory;
        io_failing_env env(memory);
        io_client client(env);
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        ASSERT_EQ(client.write_integers("A", "B", 1, {1, 2, 3}), IO_OK);
        ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        env.writes_only(true);
        env.fail(call, ENOSPC, for_good);
        int code = client.write_integers("C", "D", 1, std::vector<std::int32_t>(200, 7));
        failures += code != IO_OK ? 1 : 0;
        // A failed write of a compressed array has another code.
        EXPECT_TRUE(code == IO_OK || code == IO_DISK_FULL || code == IO_WRITE_ERROR) << code;
        int closed = client.request(IO_CLOSE_PRIMARY);
        EXPECT_TRUE(closed == IO_OK || closed == IO_DISK_FULL) << closed;
        env.fail(0, 0, false);
        take_messages();
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK) << "call " << call;
        EXPECT_EQ(client.read("A", "B", 1), "1 2 3") << "call " << call;
        if (code == IO_OK) {
            EXPECT_EQ(client.locate("C", "D", 1), "C D 1\n") << "call " << call;
        } else {
            EXPECT_EQ(client.locate("C", "D", 1), "code 17") << "call " << call;
        }
        if (closed == IO_OK && !for_good) {
            EXPECT_EQ(take_messages().find("recreate_indextable"), std::string::npos);
        }
    }
    EXPECT_GT(failures, 2);
}

INSTANTIATE_TEST_SUITE_P(Once, FailedWrite, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ForGood, FailedWrite, ::testing::Values(true));

TEST_F(WriteDataset, AFailedWriteIsReported)
{
    io_failing_env failing(env_);
    io_client client(failing);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    failing.writes_only(true);
    failing.fail(2, EIO, false);
    EXPECT_EQ(client.write_integers("A", "B", 1, {1}), IO_WRITE_ERROR);
    EXPECT_EQ(take_messages(), "write_dataset: can't write file end tag: Input/output error\n"
                               "iocnt: write dataset failed\n");
    EXPECT_EQ(env_["g"].substr(36), "*CRASH");
}

TEST_F(WriteDataset, EndingAPartialDatasetMayFailToo)
{
    auto said_when = [this](bool writes_only) {
        io_failing_env failing(env_);
        io_client client(failing);
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
        failing.writes_only(writes_only);
        failing.fail(1, EIO, true);
        EXPECT_EQ(client.write_integers("A", "B", 1, {1}), IO_WRITE_ERROR);
        std::string said = take_messages();
        env_.files.erase("g");
        env_.files.erase("g.lck");
        return said;
    };
    EXPECT_NE(said_when(true).find("write_dataset abort: can't write file end tag\n"),
              std::string::npos);
    EXPECT_NE(said_when(false).find("write_dataset abort: fseek failed\n"), std::string::npos);
}

/// The stream collects 256 KiB before it writes. The test uses headers and data of
/// all lengths near that, so that the write fails in each part.
TEST_F(WriteDataset, EachPartMayFail)
{
    std::vector<char> attributes(3200 * IO_STRING_SLOT, 'x');
    for (std::size_t end = IO_STRING_SLOT; end <= attributes.size(); end += IO_STRING_SLOT) {
        attributes[end - 1] = '\0';
    }
    std::vector<std::int32_t> values(65530);
    auto said_writing = [&](std::int32_t attribute_count, std::int32_t count) {
        io_memory_env memory;
        io_failing_env failing(memory);
        io_client client(failing);
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
        io_header_storage names = named_header("A", "B", "INTR");
        io_set_text(names.format, "u");
        names.count = count;
        IO_header header = names.header();
        header.attribute_count = &attribute_count;
        header.attributes = attributes.data();
        IO_data data;
        data.integers = values.data();
        data.integers_size = count;
        failing.writes_only(true);
        failing.fail(2, EIO, false);
        EXPECT_EQ(client.request(IO_WRITE_PRIMARY_DS, header, data), IO_WRITE_ERROR);
        EXPECT_EQ(memory["g"].substr(36), "*CRASH");
        return take_messages();
    };
    std::string said;
    for (std::int32_t count = 65500; count <= 65520; count++) {
        said += said_writing(0, count);
    }
    EXPECT_NE(said.find("write_dataset: can't write dataset end tag\n"), std::string::npos);
    said.clear();
    for (std::size_t length = 1; length < 80; length++) {
        attributes[3119 * IO_STRING_SLOT + length] = '\0';
        said += said_writing(3120, 0);
        attributes[3119 * IO_STRING_SLOT + length] = 'x';
    }
    EXPECT_NE(said.find("write_dataset: can't write dataset header\n"), std::string::npos);
    EXPECT_NE(said.find("write_dataset: can't write datatag\n"), std::string::npos);
}

TEST_F(WriteDataset, TheBlockFactorOfAFormattedDatasetIsTheClients)
{
    io_header_storage header = named_header("A", "B", "INTR");
    auto written = [&](const char *format, std::int32_t blockfactor) {
        io_set_text(header.format, format);
        header.blockfactor = blockfactor;
        header.count = 0;
        header.when++;
        IO_data data;
        EXPECT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
        std::int64_t offsets[2] = {client_.position("A", "B", header.when), 0};
        data.offsets = offsets;
        data.offsets_size = 2;
        io_header_storage read;
        EXPECT_EQ(client_.request(IO_READ_HEADER, read.header(), data), IO_OK);
        return read.blockfactor;
    };
    EXPECT_EQ(written("F", 0), 1);
    EXPECT_EQ(written("F", 1), 1);
    EXPECT_EQ(written("F", 500), 500);
    EXPECT_EQ(written("u5", -3), 100000);
    EXPECT_EQ(written("l1", 1), 100000);
    EXPECT_EQ(written("u5", 2), 2);
    EXPECT_EQ(written("u", 500), 1); // the block factor is not recorded
}

TEST_F(WriteDataset, TheTraceSaysHowAFailedIndexEnded)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    auto traced_when = [this](bool writes_only, bool for_good) {
        io_failing_env failing(env_);
        io_client client(failing);
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
        EXPECT_EQ(client.write_integers("A", "B", 1, {1}), IO_OK);
        env_.trace.clear();
        failing.writes_only(writes_only);
        failing.fail(1, EIO, for_good);
        EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_WRITE_ERROR);
        env_.files.erase("g.lck");
        return env_.trace;
    };
    auto says = [](const std::string &trace, const char *end) {
        return trace.find(std::string("TRACE> closefile index fail: ") + end) != std::string::npos;
    };
    EXPECT_TRUE(says(traced_when(true, false), "wrote crash tag OK\n"));
    EXPECT_TRUE(says(traced_when(true, true), "can't write file end tag\n"));
    EXPECT_TRUE(says(traced_when(false, true), "can't go to index location\n"));
}

} // namespace
