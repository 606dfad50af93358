// Tests opening and closing: which files are accepted, and the bytes after closing.
#include "io/Src/Main/open_file.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

class OpenFile : public ::testing::Test
{
protected:
    OpenFile() : client_(env_) { take_messages(); }

    int open_bytes(const std::string &bytes)
    {
        env_["f"] = bytes;
        take_messages();
        return client_.request(IO_OPEN_PRIMARY, "f");
    }

    io_memory_env env_;
    io_client client_;
};

const char *const empty_container = "*INFO\n"
                                    "                 161\n"
                                    "*ENDINFO\n"
                                    "F \n"
                                    "                  38\n"
                                    "*INDEX\n"
                                    "                   0\n"
                                    "*ENDINDEX\n"
                                    "                  38\n"
                                    "                  36\n";

TEST_F(OpenFile, AnEmptyFileOpenedForWritingBecomesAnEmptyContainer)
{
    env_["f"] = "";
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    EXPECT_EQ(env_["f"], "*INFO\n                   0\n*ENDINFO\n");
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::string expected = empty_container;
    expected.replace(expected.find("161"), 3, std::to_string(expected.size()));
    EXPECT_EQ(env_["f"], expected);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "code 17");
}

TEST_F(OpenFile, AnEmptyFileOpenedToReadStaysEmpty)
{
    ASSERT_EQ(open_bytes(""), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "code 17");
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_["f"], "");
}

/// White space at the end of a name does not count, even in another writer's index.
TEST_F(OpenFile, NamesInAStoredIndexAreTrimmed)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("What", "Where", 1, {5}, "u"), IO_OK);
    ASSERT_EQ(client_.write_integers("Other", "W", 1, {6}, "u"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::string bytes = env_["f"];
    for (const char *name : {"\x1bWhat", "\x1bWhere"}) {
        std::size_t end = std::string(name).size();
        for (std::size_t at = bytes.find(name); at != bytes.npos; at = bytes.find(name, at + 1)) {
            bytes.replace(at + end - 2, 2, "  ");
        }
    }
    ASSERT_EQ(open_bytes(bytes), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(client_.locate("Wh", "Whe", 1), "Wh Whe 1\n");
    EXPECT_EQ(client_.locate("Wh  ", "Whe  ", 1), "Wh Whe 1\n");
    EXPECT_EQ(client_.locate("W?", "Whe", -1), "Wh Whe 1\n");
    EXPECT_EQ(client_.read("Wh", "Whe", 1), "5");
    EXPECT_EQ(client_.read("Other", "W", 1), "6");
    EXPECT_EQ(client_.remove("Wh  ", "Whe  ", 1), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "Other W 1\n");
}

TEST_F(OpenFile, FilesThatAreNotContainersAreRefused)
{
    EXPECT_EQ(open_bytes("*INF"), IO_BAD_FILE);
    EXPECT_EQ(take_messages(), "iif_open: can't read the first seven characters\n"
                               "iocnt: open the primary file failed\n");
    EXPECT_EQ(open_bytes("LIBRARY:\nEND\n"), IO_BAD_FILE);
    EXPECT_EQ(take_messages(), "iif_open: the file is not in ZOT-5.x format\n"
                               "iocnt: open the primary file failed\n");
    EXPECT_EQ(open_bytes("*INFO\r\n 0\r\n"), IO_BAD_FILE);
    EXPECT_EQ(
        take_messages(),
        "openfile: corrupt file: the file contains Windows-style CR-LF line endings.  If this"
        " is a copy of the original file, please try again, ensuring you do the copy in binary"
        " mode.\niocnt: open the primary file failed\n");
    EXPECT_EQ(open_bytes("*INFO\r  0"), IO_BAD_FILE);
    EXPECT_EQ(take_messages(),
              "openfile: corrupt file: the line endings are incorrect.  If this is a copy of the"
              " original file, please try again, ensuring you do the copy in binary mode.\n"
              "iocnt: open the primary file failed\n");
    EXPECT_EQ(open_bytes("*INFOx 0"), IO_BAD_FILE);
    EXPECT_EQ(take_messages(), "openfile: corrupt file: trailing garbage after start tag.\n"
                               "iocnt: open the primary file failed\n");
    EXPECT_FALSE(env_.exists("f.lck"));
}

TEST_F(OpenFile, OnlyTwoOffsetWidthsExist)
{
    EXPECT_EQ(open_bytes("*INFO\n         0\n*ENDINFO\n"), IO_OK);
    EXPECT_EQ(open_bytes("*INFO\n                   0\n*ENDINFO\n"), IO_OK);
    EXPECT_EQ(open_bytes("*INFO\n              0\n*ENDINFO\n"), IO_READ_ERROR);
    EXPECT_EQ(take_messages(), "iif_open: offset format 15 is not currently supported (or bad file"
                               " header)\niocnt: open the primary file failed\n");
    EXPECT_EQ(open_bytes("*INFO\n         x\n*ENDINFO\n"), IO_READ_ERROR);
    EXPECT_EQ(take_messages(),
              "iif_open: fail to read the filesize\niocnt: open the primary file failed\n");
    EXPECT_EQ(open_bytes("*INFO\n         0\n*ENDINFX\n"), IO_BAD_FILE);
    EXPECT_EQ(take_messages(),
              "iif_open: fail to read the INFO tag\niocnt: open the primary file failed\n");
}

/// The message has the true width of the line with the file size, however long it is.
TEST_F(OpenFile, ALongLineOfTheFileSizeHasItsTrueWidth)
{
    for (std::size_t width : {64U, 65U, 100U, 4096U, 10000U}) {
        EXPECT_EQ(open_bytes("*INFO\n" + std::string(width, '0') + "\n*ENDINFO\n"), IO_READ_ERROR);
        EXPECT_EQ(take_messages(), "iif_open: offset format " + std::to_string(width) +
                                       " is not currently supported (or bad file header)\n"
                                       "iocnt: open the primary file failed\n");
        EXPECT_EQ(open_bytes("*INFO\n" + std::string(width, '0')), IO_READ_ERROR);
        EXPECT_EQ(take_messages(),
                  "iif_open: fail to read the filesize\niocnt: open the primary file failed\n");
    }
}

TEST_F(OpenFile, OldWidthIsKeptWhenWriting)
{
    env_["f"] = "*INFO\n         0\n*ENDINFO\n";
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1, 2}, "F"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_["f"].substr(0, 26),
              "*INFO\n" + std::string(10 - std::to_string(env_["f"].size()).size(), ' ') +
                  std::to_string(env_["f"].size()) + "\n*ENDINFO\n");
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(client_.read("A", "B", 1), "1 2");
}

TEST_F(OpenFile, AccessCodes)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    open_file file(env_, report);
    EXPECT_EQ(iif_open(file, nullptr, "r"), IO_CANNOT_OPEN);
    EXPECT_EQ(take_messages(), "iif_open: filename is NULL\n");
    EXPECT_EQ(iif_open(file, "f", "q"), IO_CANNOT_OPEN);
    EXPECT_EQ(take_messages(), "iif_open: unknown access code q\n");
    EXPECT_EQ(iif_open(file, "f", "d"), IO_OK); // created if it does not exist
    EXPECT_EQ(file.mode, open_mode::write);
    EXPECT_EQ(iif_close(file), IO_OK);
    env_.read_only.insert("f");
    EXPECT_EQ(iif_open(file, "f", "d"), IO_OK);
    EXPECT_EQ(file.mode, open_mode::read);
    EXPECT_EQ(iif_close(file), IO_OK);
    EXPECT_EQ(iif_open(file, "f", "a"), IO_CANNOT_SEEK);
    EXPECT_EQ(take_messages(), "iif_open: can't open file f: Permission denied\n");
    EXPECT_FALSE(env_.exists("f.lck"));
}

TEST_F(OpenFile, AReadOnlyOpenNeverChangesTheFile)
{
    env_["f"] = "";
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1, 2}), IO_OK);
    std::string crashed = env_["f"];
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    ASSERT_EQ(open_bytes(crashed), IO_OK);
    EXPECT_EQ(client_.read("A", "B", 1), "1 2");
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_["f"], crashed);
}

TEST_F(OpenFile, OpeningAnOpenFileClosesTheFirst)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1}), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    EXPECT_FALSE(env_.exists("f.lck"));
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client_.locate("A", "B", -1), "A B 1\n");
    EXPECT_FALSE(env_.exists("g.lck"));
}

TEST_F(OpenFile, ASessionThatEndsClosesItsFiles)
{
    {
        io_client other(env_);
        ASSERT_EQ(other.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        ASSERT_EQ(other.write_integers("A", "B", 1, {1}), IO_OK);
    }
    EXPECT_FALSE(env_.exists("f.lck"));
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(client_.locate("A", "B", -1), "A B 1\n");
}

TEST_F(OpenFile, NoBytesRemainAfterAShorterIndex)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("A", "B", 1, {1}), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::string whole = env_["f"];
    env_["f"] += std::string(500, 'x');
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_BAD_FILE); // bytes after the index
    env_["f"] = whole + "*CRASH" + std::string(500, 'x');
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_["f"], whole);
}

TEST_F(OpenFile, OpenedForWritingItsIndexIsWrittenAgain)
{
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::string whole = env_["f"];
    env_.variables["ZOT_IO_TRACE"] = "1";
    io_client other(env_);
    ASSERT_EQ(other.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(other.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_NE(env_.trace.find("iif_flush: writing final index\n"), std::string::npos);
    EXPECT_EQ(env_["f"], whole);
}

TEST_F(OpenFile, TheTraceShowsTheSteps)
{
    env_["f"] = "*INFO\n                   0\n*ENDINFO\n";
    env_.variables["ZOT_IO_TRACE"] = "1";
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_.trace,
              "TRACE> iif_open: Opened file f\n"
              "TRACE> iif_open: offset format is 20\n"
              "TRACE> iif_open: filesize has changed (recorded 0, actual 36), recreating index\n"
              "TRACE> iif_close: Closing file f\n"
              "TRACE> iif_flush: writing final index\n");
}

} // namespace
