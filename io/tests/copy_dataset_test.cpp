// Tests copies of one, some and all datasets; reads the target back and compares.
#include "io/Src/Main/copy_dataset.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

class CopyDataset : public ::testing::Test
{
protected:
    CopyDataset() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(client_.write_integers("A", "P", 0, {1}, "F"), IO_OK);
        EXPECT_EQ(client_.write_doubles("B", "P", 1, std::vector<double>(200, 2.5), "l"), IO_OK);
        EXPECT_EQ(client_.write_strings("C", "Q", 0, {"text"}, "u"), IO_OK);
        EXPECT_EQ(client_.write_integers("D", "P", 2, std::vector<std::int32_t>(200, 3)), IO_OK);
        EXPECT_EQ(client_.remove("D", "P", 2), IO_OK);
        EXPECT_EQ(client_.write_integers("B", "P", 7, {9}), IO_OK);
        EXPECT_EQ(client_.request(IO_OPEN_SECONDARY, "g"), IO_OK);
        take_messages();
    }

    int copy(io_request number, const char *what = "A", const char *where = "P",
             std::int32_t when = 0, std::int64_t position = 0)
    {
        io_header_storage header = named_header(what, where);
        header.when = when;
        std::int64_t offsets[2] = {position, 0};
        IO_data data;
        data.offsets = offsets;
        data.offsets_size = 2;
        return client_.request(number, header.header(), data);
    }

    /// The datasets of the copy with their format codes.
    std::string copied()
    {
        EXPECT_EQ(client_.request(IO_CLOSE_SECONDARY), IO_OK);
        io_client reader(env_);
        EXPECT_EQ(reader.request(IO_OPEN_PRIMARY, "g"), IO_OK);
        index_table &index = reader.session().primary()->index;
        std::string text;
        io_reporter report(env_);
        for (std::int32_t slot = 0; slot < index.count(); slot++) {
            located_dataset record = {};
            EXPECT_EQ(parseindex(report, index.line(slot), record), IO_OK);
            text += std::string(record.what) + " " + record.where + " " +
                    std::to_string(record.when) + " " +
                    env_["g"].substr(static_cast<std::size_t>(record.position), 2) + " " +
                    reader.read_at(record.position).substr(0, 7) + "\n";
        }
        EXPECT_EQ(reader.request(IO_CLOSE_PRIMARY), IO_OK);
        return text;
    }

    io_memory_env env_;
    io_client client_;
};

TEST_F(CopyDataset, AllLiveOnesInIndexOrder)
{
    ASSERT_EQ(copy(IO_COPY_ALLVALID_DS), IO_OK);
    EXPECT_EQ(copied(), "A P 0 F  1\nB P 1 l  2.5 2.5\nC Q 0 u  \"text\"\nB P 7 u5 9\n");
}

TEST_F(CopyDataset, APatternOrEveryWhenOverridesAPosition)
{
    std::int64_t position = client_.position("C", "Q", 0);
    ASSERT_EQ(copy(IO_COPY_DATASET, "B", "P", -1, position), IO_OK);
    ASSERT_EQ(copy(IO_COPY_DATASET, "A*", "P", 0, position), IO_OK);
    EXPECT_EQ(copied(), "B P 7 u5 9\nB P 1 l  2.5 2.5\nA P 0 F  1\n");
}

TEST_F(CopyDataset, TheDatasetsAtWhenZero)
{
    ASSERT_EQ(copy(IO_COPY_WHEN0_DS), IO_OK);
    EXPECT_EQ(copied(), "A P 0 F  1\nC Q 0 u  \"text\"\n");
}

TEST_F(CopyDataset, CompressingTheDatasetsOfAWhen)
{
    ASSERT_EQ(copy(IO_COPY_DS_COMPRESS_WHEN, "A", "P", 1), IO_OK);
    EXPECT_EQ(copied(), "B P 1 u5 2.5 2.5\n");
}

TEST_F(CopyDataset, CompressingAll)
{
    ASSERT_EQ(copy(IO_COPY_DS_COMPRESS_WHEN, "A", "P", -1), IO_OK);
    EXPECT_EQ(copied(), "A P 0 F  1\nB P 1 u5 2.5 2.5\nC Q 0 u  \"text\"\nB P 7 u5 9\n");
    ASSERT_EQ(client_.request(IO_OPEN_SECONDARY, "h"), IO_OK);
    EXPECT_EQ(copy(IO_COPY_DS_COMPRESS_WHEN, "A", "P", 99), IO_OK); // no match is not a failure
}

TEST_F(CopyDataset, ByNameByPatternAndUnderANewName)
{
    ASSERT_EQ(copy(IO_COPY_DATASET, "C", "Q", 0), IO_OK);
    ASSERT_EQ(copy(IO_COPY_DATASET, "[AB]", "P", -1), IO_OK);
    std::int64_t at = client_.position("A", "P", 0);
    ASSERT_EQ(copy(IO_COPY_DATASET, "NEW", "PLACE", 12, at), IO_OK);
    EXPECT_EQ(copied(), "C Q 0 u  \"text\"\nB P 7 u5 9\nB P 1 l  2.5 2.5\nA P 0 F  1\n"
                        "NEW PLACE 12 F  1\n");
}

/// A copy in any format has a record of the block factor only if the source has
/// one.
TEST_F(CopyDataset, TheBlockFactorOnDiskIsKept)
{
    ASSERT_EQ(client_.write_integers("F", "R", 1, {1}, "F"), IO_OK);
    ASSERT_EQ(client_.write_integers("G", "R", 1, {1}, "u5"), IO_OK);
    ASSERT_EQ(client_.write_integers("H", "R", 1, {1}, "u"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    // Another writer put a block factor into an uncompressed binary dataset.
    std::string record = "\x0d" + std::string(3, '\0') +
                         "BLOCKFACTOR\x1b"
                         "8";
    std::string &bytes = env_["f"];
    std::size_t start = bytes.find("WHAT\x1bH");
    std::size_t tag = bytes.find("*DATA", start);
    bytes.insert(tag - 4, record);
    for (std::size_t at : {start - 27, bytes.find("*ENDDATASET", start) + 11}) {
        bytes[at] = static_cast<char>(bytes[at] + static_cast<char>(record.size()));
    }
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK) << take_messages();
    ASSERT_EQ(client_.read("H", "R", 1), "1") << take_messages();
    EXPECT_EQ(copy(IO_COPY_DATASET, "?", "R", -1), IO_OK) << take_messages();
    ASSERT_EQ(client_.request(IO_CLOSE_SECONDARY), IO_OK);
    auto factor = [this](const char *what) {
        std::size_t at = env_["g"].find(std::string("WHAT\x1b") + what);
        std::size_t end = env_["g"].find("*DATA", at);
        std::size_t found = env_["g"].find("BLOCKFACTOR\x1b", at);
        return found < end ? env_["g"].substr(found + 12, 6) : std::string("none");
    };
    EXPECT_EQ(factor("F"), "1     ");
    EXPECT_EQ(factor("G"), "100000");
    EXPECT_EQ(factor("H").substr(0, 1), "8");
    io_client reader(env_);
    ASSERT_EQ(reader.request(IO_OPEN_PRIMARY, "g"), IO_OK);
    EXPECT_EQ(reader.read("H", "R", 1), "1");
}

TEST_F(CopyDataset, DatasetsThatDoNotExist)
{
    EXPECT_EQ(copy(IO_COPY_DATASET, "X", "P", 0), IO_NOT_FOUND);
    take_messages();
    EXPECT_EQ(copy(IO_COPY_DATASET, "X", "P", 0, 6), IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(), "copy_dataset: the source data set location is incorrect: bad format"
                               " type in   \niocnt: copy_dataset failed\n");
    EXPECT_EQ(copied(), "");
}

TEST_F(CopyDataset, BigEndianDataIsCopiedUnchanged)
{
    std::int64_t at = client_.position("C", "Q", 0);
    ASSERT_EQ(copy(IO_COPY_DATASET, "C", "Q", 0, at), IO_OK);
    env_.variables["ZOT_IO_TRACE"] = "1";
    // Makes a big-endian source from a little-endian one.
    std::string inner;
    auto counted = [](const std::string &text) {
        return std::string("\0\0\0", 3) + static_cast<char>(text.size()) + text;
    };
    inner = "*DATASET" + counted("*HEADER") +
            counted("WHAT\x1b"
                    "E") +
            counted("WHERE\x1bP") +
            counted("WHEN\x1b"
                    "0") +
            counted("NUMATTRB\x1b"
                    "1") +
            counted("note") + counted("DATATYPE\x1bINTR") +
            counted("NUMBER\x1b"
                    "1") +
            counted("*DATA") + std::string("\0\0\1\2", 4) + "*ENDDATASET";
    std::string length = std::string("\0\0\0", 3) + static_cast<char>(inner.size());
    env_["big"] = "*INFO\n         0\n*ENDINFO\nU \n" + length + inner + length;
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "big"), IO_OK);
    ASSERT_EQ(copy(IO_COPY_ALLVALID_DS), IO_OK);
    EXPECT_EQ(copied(), "C Q 0 u  \"text\"\nE P 0 U  258\n");
    EXPECT_NE(env_["g"].find("U \n" + length + inner + length), std::string::npos);
}

TEST_F(CopyDataset, ADamagedSourceIsNotCopied)
{
    std::int64_t at = client_.position("B", "P", 7);
    std::size_t end = env_["f"].find("*ENDDATASET", static_cast<std::size_t>(at));
    env_["f"][end] = '+';
    std::string before = env_["g"];
    EXPECT_EQ(copy(IO_COPY_DATASET, "B", "P", 7), IO_BAD_FORMAT);
    EXPECT_EQ(env_["g"], before);
}

TEST_F(CopyDataset, AFileOntoItself)
{
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client_.request(IO_OPEN_SECONDARY, "f"), IO_LOCKED);
}

} // namespace
