// Tests deletions: the marks in the file and in the index, also after a crash
// between the two writes.
#include "io/Src/Main/delete_ds.h"

#include "io/testing/io_failing_env.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

class DeleteDs : public ::testing::Test
{
protected:
    DeleteDs() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(client_.write_integers("A", "P", 1, {1}, "u"), IO_OK);
        EXPECT_EQ(client_.write_integers("A", "P", 2, {2}, "l9"), IO_OK);
        EXPECT_EQ(client_.write_integers("B", "Q", 1, {3}, "F"), IO_OK);
        take_messages();
    }

    void reopen()
    {
        ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
        ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    }

    io_memory_env env_;
    io_client client_;
};

TEST_F(DeleteDs, TheDatasetStaysMarked)
{
    auto at = static_cast<std::size_t>(client_.position("A", "P", 2));
    std::size_t size = env_["f"].size();
    ASSERT_EQ(client_.remove("A", "P", 2), IO_OK);
    EXPECT_EQ(env_["f"].substr(at, 3), "x\xb9\n");
    EXPECT_EQ(env_["f"].size(), size);
    EXPECT_EQ(client_.locate("*", "*", -1), "A P 1\nB Q 1\n");
    EXPECT_EQ(client_.read_at(static_cast<std::int64_t>(at), "INTR"), "code 10");
    reopen();
    EXPECT_EQ(take_messages().find("recreate"), std::string::npos);
    EXPECT_EQ(client_.locate("*", "*", -1), "A P 1\nB Q 1\n");
    EXPECT_NE(env_["f"].find("N\x1b"
                             "A\x1bP\x1b"
                             "2\x1b"),
              std::string::npos);
    ASSERT_EQ(client_.write_integers("A", "P", 2, {5}), IO_OK);
    EXPECT_EQ(client_.read("A", "P", 2), "5");
}

TEST_F(DeleteDs, ASecondDeletionFindsNoDataset)
{
    ASSERT_EQ(client_.remove("A", "P", 2), IO_OK);
    std::string before = env_["f"];
    EXPECT_EQ(client_.remove("A", "P", 2), IO_NOT_FOUND);
    EXPECT_EQ(take_messages(), "delete_ds: locate_dataset failed\niocnt: delete_ds failed\n");
    EXPECT_EQ(env_["f"], before);
}

TEST_F(DeleteDs, PatternsAndEveryWhen)
{
    ASSERT_EQ(client_.remove("A", "P", -1), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "B Q 1\n");
    ASSERT_EQ(client_.remove("*", "*", -1), IO_OK);
    EXPECT_EQ(client_.locate("*", "*", -1), "code 17");
}

TEST_F(DeleteDs, AMarkWrittenBeforeACrashCounts)
{
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.remove("A", "P", 1), IO_OK);
    env_["crashed"] = env_["f"];
    io_client reader(env_);
    ASSERT_EQ(reader.request(IO_OPEN_PRIMARY, "crashed"), IO_OK);
    EXPECT_EQ(reader.locate("*", "*", -1), "A P 2\nB Q 1\n");
}

TEST_F(DeleteDs, AMarkThatTheIndexDoesNotHaveIsNotChanged)
{
    auto at = static_cast<std::size_t>(client_.position("A", "P", 1));
    auto other = static_cast<std::size_t>(client_.position("A", "P", 2));
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    env_["f"].replace(at, 2, "DU");
    env_["f"].replace(other, 2, "Q ");
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    EXPECT_EQ(client_.remove("A", "P", 1), IO_OK);
    EXPECT_EQ(env_["f"].substr(at, 2), "DU");
    take_messages();
    EXPECT_EQ(client_.remove("A", "P", 2), IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(), "delete_process_sub: invalid format tag, should never arrive here\n"
                               "delete_bywhat: delete_process failed\n"
                               "delete_ds: delete_bywhat failed\niocnt: delete_ds failed\n");
    // Its slot in the index was marked first, so no look-up finds it any more.
    EXPECT_EQ(client_.locate("A", "P", 2), "code 17");
}

TEST_F(DeleteDs, TheIndexIsMarkedBeforeTheFile)
{
    auto at = static_cast<std::size_t>(client_.position("A", "P", 1));
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::string code = env_["f"].substr(at, 3);
    io_failing_env failing(env_);
    io_client client(failing);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    failing.writes_only(true);
    failing.fail(2, EIO, false); // the first write is the write of "*CRASH"
    EXPECT_EQ(client.remove("A", "P", 1), IO_WRITE_ERROR);
    EXPECT_EQ(client.locate("A", "P", 1), "code 17");
    EXPECT_EQ(env_["f"].substr(at + 1, 2), code.substr(1));
}

TEST_F(DeleteDs, AMissingFileIsNotCreated)
{
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "gone"), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "gone"), IO_OK);
    env_.files.erase("gone");
    EXPECT_EQ(client.remove("A", "P", 1), IO_CANNOT_SEEK);
    EXPECT_FALSE(env_.exists("gone"));
    EXPECT_FALSE(env_.exists("gone.lck"));
}

} // namespace
