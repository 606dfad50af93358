// Tests the index built from the datasets, for files cut or damaged in each known
// way.
#include "io/Src/Main/index_file.h"

#include "io/testing/io_failing_env.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

class Rebuild : public ::testing::Test
{
protected:
    Rebuild() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(client_.write_integers("A", "P", 1, {1, 2, 3}, "u"), IO_OK);
        EXPECT_EQ(client_.write_integers("B", "P", 2, {4, 5}, "F"), IO_OK);
        EXPECT_EQ(client_.write_integers("C", "P", 3, {6}, "l"), IO_OK);
        crashed_ = env_["f"];
        second_ = client_.position("B", "P", 2);
        third_ = client_.position("C", "P", 3);
        EXPECT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
        whole_ = env_["f"];
        take_messages();
    }

    /// The names that a look-up finds after these bytes were opened to read, or
    /// the code.
    std::string names(const std::string &bytes)
    {
        env_["f"] = bytes;
        take_messages();
        if (int code = client_.request(IO_OPEN_PRIMARY, "f")) {
            return "code " + std::to_string(code);
        }
        return client_.locate("*", "*", -1);
    }

    void put(std::string &bytes, std::int64_t at, const std::string &text)
    {
        bytes.replace(static_cast<std::size_t>(at), text.size(), text);
    }

    static constexpr const char *all = "C P 3\nB P 2\nA P 1\n";
    static constexpr const char *unreadable =
        "iif_open: unable to read the stored index, attempting to rebuild it\n";

    io_memory_env env_;
    io_client client_;
    std::string crashed_;
    std::string whole_;
    std::int64_t second_ = 0;
    std::int64_t third_ = 0;
};

TEST_F(Rebuild, ACompleteFileNeedsNone)
{
    EXPECT_EQ(names(whole_), all);
    EXPECT_EQ(take_messages(), "");
}

TEST_F(Rebuild, AFileThatWasNotClosed)
{
    ASSERT_EQ(crashed_.substr(crashed_.size() - 6), "*CRASH");
    EXPECT_EQ(names(crashed_), all);
    EXPECT_EQ(take_messages(),
              "recreate_indextable: warning: file was not closed correctly, data may"
              " be inconsistent\n");
    EXPECT_EQ(names(crashed_.substr(0, crashed_.size() - 6)), all);
    EXPECT_EQ(take_messages(), "");
}

TEST_F(Rebuild, AStoredIndexIsSkipped)
{
    std::string changed = whole_;
    put(changed, 6, "                   0");
    EXPECT_EQ(names(changed), all);
    EXPECT_EQ(take_messages(), "");
}

TEST_F(Rebuild, ATruncatedIndexIsMentioned)
{
    EXPECT_EQ(names(whole_.substr(0, whole_.size() - 30)), all);
    EXPECT_NE(
        take_messages().find("recreate_indextable: warning: truncated (or bad) index data at end"
                             " of file while rebuilding index, file is corrupt but probably"
                             " recoverable, continuing.  ["),
        std::string::npos);
}

TEST_F(Rebuild, AnIndexThatCannotBeTrusted)
{
    struct change
    {
        const char *from;
        const char *to;
        const char *said;
    };
    // The file size remains correct. Each of these changes must be noticed.
    for (change one :
         {change{"*ENDINDEX", "*ENDINDEY", "missing end tag"},
          change{"Y\x1b"
                 "A",
                 "Q\x1b"
                 "A",
                 "bad line 1/3"},
          change{"\x1b"
                 "P\x1b"
                 "1",
                 "\x1bP\x1bx", "bad line 1/3"},
          change{"\nY\x1b"
                 "A\x1b",
                 "\nY\x1b\x1b\x1b", "bad line 1/3"},
          change{"                   3\nY", "                   4\nY", "line 4/4 missing"},
          change{"                   3\nY", "                   2\nY", "too many lines"},
          change{"                   3\nY", "                  -3\nY", "missing count"},
          change{"\n*ENDINDEX", "0*ENDINDEX", "error finding EOL"}}) {
        std::string changed = whole_;
        std::size_t at = changed.rfind(one.from);
        ASSERT_NE(at, std::string::npos) << one.from;
        changed.replace(at, std::string(one.to).size(), one.to);
        EXPECT_EQ(names(changed), all) << one.to;
        EXPECT_EQ(take_messages(),
                  std::string("create_indextable: index is wrong: ") + one.said + "\n" + unreadable)
            << one.to;
    }
}

/// The index is so long that it is read separately from the bytes around it.
TEST_F(Rebuild, AnIndexThatCannotBeRead)
{
    auto number = [](std::size_t value) {
        std::string digits = std::to_string(value);
        return std::string(20 - digits.size(), ' ') + digits + "\n";
    };
    const std::string inner = "*INDEX\n" + number(1) + std::string(200000, 'x') + "\n*ENDINDEX\n";
    const std::string index = "F \n" + number(inner.size()) + inner + number(inner.size());
    const std::string start = "*INFO\n" + number(36 + index.size() + 21) + "*ENDINFO\n";
    env_["f"] = start + index + number(start.size());
    std::string said;
    for (int call = 1; call < 20; call++) {
        io_failing_env failing(env_);
        io_client client(failing);
        failing.fail(call, EIO, false);
        client.request(IO_OPEN_PRIMARY, "f");
        env_.files.erase("f.lck");
        said += take_messages();
    }
    EXPECT_NE(said.find("create_indextable: (can't read the whole index) syserr:: Input/output"
                        " error\n"),
              std::string::npos);
}

TEST_F(Rebuild, AnIndexWithoutItsWordIsDamage)
{
    std::string changed = whole_;
    put(changed, static_cast<std::int64_t>(changed.rfind("*INDEX")), "*INDEY");
    EXPECT_EQ(names(changed), "code 20");
    EXPECT_NE(take_messages().find("create_indextable: stored index is wrong: missing start tag\n"),
              std::string::npos);
}

TEST_F(Rebuild, IndexLinesThatPointOutsideTheFile)
{
    std::string changed = whole_;
    std::string line = "\x1b" + std::to_string(third_) + "\n";
    std::size_t at = changed.rfind(line);
    ASSERT_NE(at, std::string::npos);
    changed.replace(at + 1, line.size() - 2, std::string(line.size() - 2, '9'));
    EXPECT_EQ(names(changed), all);
    EXPECT_NE(take_messages().find(unreadable), std::string::npos);
}

TEST_F(Rebuild, ALengthOfZeroEndsTheScan)
{
    std::string changed = crashed_;
    put(changed, third_ + 3, std::string(8, '\0'));
    EXPECT_EQ(names(changed), "B P 2\nA P 1\n");
    EXPECT_EQ(take_messages(), "recreate_indextable: dataset length of zero in dataset C:P:3 at"
                               " offset " +
                                   std::to_string(third_) +
                                   ": assuming interrupted write and terminating scan.\n");
    put(changed, third_ + 11, "********");
    EXPECT_EQ(names(changed), "B P 2\nA P 1\n");
    EXPECT_EQ(take_messages(),
              "recreate_indextable: dataset length of zero in dataset at offset " +
                  std::to_string(third_) +
                  " (format l ): assuming incomplete file and terminating scan.\n");
}

TEST_F(Rebuild, ACutDatasetIsLostAndTheOthersRemain)
{
    EXPECT_EQ(names(crashed_.substr(0, crashed_.size() - 7)), "B P 2\nA P 1\n");
    EXPECT_NE(take_messages().find("recreate_indextable: fseek of "), std::string::npos);
    EXPECT_EQ(names(crashed_.substr(0, static_cast<std::size_t>(third_ + 5))), "B P 2\nA P 1\n");
    EXPECT_NE(take_messages().find("recreate_indextable: error reading initial dataset length in"
                                   " dataset of format l , starting at offset " +
                                   std::to_string(third_)),
              std::string::npos);
    EXPECT_EQ(names(crashed_.substr(0, static_cast<std::size_t>(third_ + 2))), "B P 2\nA P 1\n");
    EXPECT_NE(take_messages().find("recreate_indextable: Bad file: expected dataset, index or end"),
              std::string::npos);
}

TEST_F(Rebuild, DatasetsThatContradictThemselvesAreDamaged)
{
    auto with = [&](std::int64_t at, const std::string &text) {
        std::string changed = crashed_;
        put(changed, at, text);
        return names(changed);
    };
    EXPECT_EQ(with(second_, "Q"), "code 20");
    EXPECT_EQ(take_messages(),
              "recreate_indextable: Bad file: expected dataset, index or end, got \"Q .            "
              " \" at byte " +
                  std::to_string(second_) + "\niocnt: open the primary file failed\n");
    EXPECT_EQ(with(third_ + 3, std::string(8, '\xff')), "code 20");
    EXPECT_NE(take_messages().find("recreate_indextable: bad dataset length -1\n"),
              std::string::npos);
    EXPECT_EQ(with(third_ + 11, "*DATASEX"), "code 20");
    EXPECT_EQ(with(third_ + 23, "*HEADEX"), "code 20");
    EXPECT_NE(take_messages().find("read_header: bad header record *HEADEX in f\n"),
              std::string::npos);
    std::int64_t last = static_cast<std::int64_t>(crashed_.size()) - 6 - 8;
    EXPECT_EQ(with(last, "\1"), "code 20");
    EXPECT_NE(take_messages().find("recreate_indextable: error 20 reading final dataset length for"
                                   " C:P:3 at offset " +
                                   std::to_string(third_)),
              std::string::npos);
}

TEST_F(Rebuild, NamesThatNoLookUpCanFind)
{
    std::string record = "WHAT\x1b"
                         "C";
    for (char name : {' ', '\x01', '\x7f', '\0'}) {
        std::string changed = crashed_;
        changed[changed.find(record) + record.size() - 1] = name;
        EXPECT_EQ(names(changed), "code 20");
        EXPECT_EQ(take_messages().find("read_header: bad what record "), 0U);
    }
    record = "WHERE\x1b"
             "P";
    std::string changed = crashed_;
    changed[changed.rfind(record) + record.size() - 1] = '\x1b';
    EXPECT_EQ(names(changed), "code 20");
    EXPECT_EQ(take_messages().find("read_header: bad where record "), 0U);
}

TEST_F(Rebuild, DeletedDatasetsAreSkipped)
{
    std::string changed = crashed_;
    put(changed, second_, "DF");
    put(changed, third_, "xl");
    EXPECT_EQ(names(changed), "A P 1\n");
    put(changed, 36, "D "); // of an older style: U, u and F are tried
    EXPECT_EQ(names(changed), "code 17");
    put(changed, second_, "DU"); // the wrong letter: the spaces of a length are a huge number
    EXPECT_EQ(names(changed), "code 17");
    EXPECT_NE(take_messages().find("recreate_indextable: fseek of 538976288 to skip dataset"),
              std::string::npos);
}

/// Wherever the file is cut in this dataset, it can be opened, and only this
/// dataset is missing.
TEST_F(Rebuild, ACutDatasetWithAnOldMarkIsLostAndTheOthersRemain)
{
    struct old_mark
    {
        const char *format;
        const char *mark;
    };
    for (old_mark kind :
         {old_mark{"u", "D "}, {"F", "D "}, {"l", "X "}, {"l", "x "}, {"F", "d?"}}) {
        io_memory_env env;
        io_client client(env);
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        ASSERT_EQ(client.write_integers("A", "P", 1, {1, 2, 3}, "u"), IO_OK);
        ASSERT_EQ(client.write_integers("Z", "P", 9, {4, 5, 6}, kind.format), IO_OK);
        auto last = static_cast<std::size_t>(client.position("Z", "P", 9));
        std::string bytes = env["f"].substr(0, env["f"].rfind("*CRASH"));
        ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
        bytes.replace(last, 2, kind.mark);
        for (std::size_t size = last; size <= bytes.size(); size++) {
            env["f"] = bytes.substr(0, size);
            take_messages();
            ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK)
                << kind.format << kind.mark << " of " << size - last << ": " << take_messages();
            EXPECT_EQ(client.locate("*", "*", -1), "A P 1\n");
        }
    }
}

TEST_F(Rebuild, AnOldMarkWhoseLengthsDifferIsDamage)
{
    std::string changed = crashed_;
    put(changed, 36, "D ");
    std::string length = changed.substr(39, 4);
    std::size_t second = changed.find("*ENDDATASET", 36) + 11;
    ASSERT_EQ(changed.substr(second, 4), length);
    changed[second] = '\x05';
    changed[second + 1] = '\x01';
    EXPECT_EQ(names(changed), "code 20");
    EXPECT_NE(take_messages().find("final dataset length field 261 is bad, or differs from original"
                                   " dataset length field " +
                                   std::to_string(static_cast<unsigned char>(length[0])) +
                                   " in deleted dataset with old-style format D \n"),
              std::string::npos);
}

TEST_F(Rebuild, ADeletedDatasetAtTheEndKeepsItsPlace)
{
    std::string changed = crashed_;
    put(changed, third_, "xl");
    env_["f"] = changed;
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("D", "P", 4, {9}), IO_OK);
    EXPECT_EQ(client_.position("D", "P", 4), static_cast<std::int64_t>(crashed_.size()) - 6);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_["f"].substr(36, crashed_.size() - 42), changed.substr(36, crashed_.size() - 42));
}

TEST_F(Rebuild, LengthsOfADeletedDatasetThatDiffer)
{
    std::string changed = crashed_;
    put(changed, third_, "xl");
    std::int64_t last = static_cast<std::int64_t>(crashed_.size()) - 6 - 8;
    put(changed, last, "\1");
    EXPECT_EQ(names(changed), "code 20");
    EXPECT_NE(take_messages().find("deleted dataset with byte-order-specific format xl\n"),
              std::string::npos);
    put(changed, third_, "x ");
    EXPECT_EQ(names(changed), "code 20");
    EXPECT_NE(take_messages().find("deleted dataset with old-style format x \n"),
              std::string::npos);
}

TEST_F(Rebuild, WritingContinuesAfterTheLastWholeDataset)
{
    env_["f"] = crashed_.substr(0, crashed_.size() - 20);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("D", "P", 4, {9}), IO_OK);
    EXPECT_EQ(client_.position("D", "P", 4), third_);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    take_messages();
    EXPECT_EQ(names(env_["f"]), "D P 4\nB P 2\nA P 1\n");
    EXPECT_EQ(take_messages(), "");
}

} // namespace
