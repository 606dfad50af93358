// Tests the slots of the index: bytes, growth, sentinel and orders.
#include "io/Src/Main/index_table.h"

#include "io/Src/Main/get_ds_location.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

class IndexTable : public ::testing::Test
{
protected:
    IndexTable() : report_(env_)
    {
        report_.set_routine(collect_message);
        take_messages();
    }

    void insert(const std::string &what, const std::string &where, std::int32_t when)
    {
        std::string line = format_index_line('Y', what, where, when, 200, next_);
        ASSERT_EQ(table_.insert_index(report_, line), IO_OK);
        next_ += 1000;
    }

    /// "WHAT WHERE WHEN" of every slot in order.
    std::string lines() const
    {
        std::string text;
        for (std::int32_t slot = 0; slot < table_.count(); slot++) {
            text += name(slot);
        }
        return text;
    }

    std::string name(std::int32_t slot) const
    {
        located_dataset record = {};
        EXPECT_EQ(parseindex(report_, table_.line(slot), record), IO_OK);
        return std::string(record.what) + " " + record.where + " " + std::to_string(record.when) +
               "\n";
    }

    io_memory_env env_;
    io_reporter report_;
    index_table table_;
    std::int64_t next_ = 36;
};

TEST_F(IndexTable, ALineIsTheSameAsInTheFile)
{
    EXPECT_EQ(format_index_line('Y', "G/COMMANDS", "EVERY", -3, 1234567890123, 36),
              "Y\x1bG/COMMANDS\x1b"
              "EVERY\x1b-3\x1b"
              "1234567890123\x1b"
              "36");
}

TEST_F(IndexTable, ANewTableHasTenThousandSlotsAndTheSentinel)
{
    insert("A", "B", 1);
    EXPECT_EQ(table_.capacity(), 10000);
    EXPECT_EQ(*table_.line(1), '\0');
    EXPECT_EQ(*table_.line(9999), '\0');
    EXPECT_EQ(*table_.line(10000), '\x1b');
}

TEST_F(IndexTable, ALineAtTheSentinelGrowsTheTable)
{
    for (int i = 0; i < 10000; i++) {
        insert("W" + std::to_string(10000 - i), "B", 0);
    }
    table_.sort_by_what();
    EXPECT_TRUE(table_.sorted());
    std::string before = lines();
    env_.variables["ZOT_IO_TRACE"] = "1";
    io_reporter tracing(env_);
    ASSERT_EQ(table_.insert_index(tracing, format_index_line('Y', "A", "B", 0, 200, next_)), IO_OK);
    EXPECT_EQ(env_.trace, "TRACE> insert_index: Marking index as unsorted\n");
    EXPECT_EQ(table_.count(), 10001);
    EXPECT_EQ(table_.capacity(), 20000);
    EXPECT_EQ(*table_.line(20000), '\x1b');
    EXPECT_FALSE(table_.sorted());
    EXPECT_EQ(lines(), before + "A B 0\n");
}

TEST_F(IndexTable, SortsByBytesFromTheThirdOn)
{
    insert("B", "X", 10);
    insert("A", "Y", 2);
    insert("B", "X", 9);
    insert("AB", "X", 0);
    insert("A", "X", 0);
    table_.set_status(0, 'N');
    table_.sort_by_what();
    // WHEN is compared as text; ESC is less than every letter.
    EXPECT_EQ(lines(), "A X 0\nA Y 2\nAB X 0\nB X 10\nB X 9\n");
    EXPECT_EQ(table_.status(3), 'N');
}

TEST_F(IndexTable, TheWhereOrderDoesNotMoveTheLines)
{
    insert("B", "Y", 1);
    insert("A", "Z", 1);
    insert("C", "X", 2);
    std::string text;
    for (std::int32_t slot : table_.where_order()) {
        text += name(slot);
    }
    EXPECT_EQ(text, "C X 2\nB Y 1\nA Z 1\n");
    EXPECT_EQ(lines(), "B Y 1\nA Z 1\nC X 2\n");
    insert("D", "A", 0);
    EXPECT_EQ(table_.where_order().front(), 3);
}

TEST_F(IndexTable, ALineTooLongForItsSlotIsRefused)
{
    EXPECT_EQ(table_.insert_index(report_, std::string(256, 'x')), IO_NO_ROOM);
    EXPECT_EQ(table_.insert_index(report_, std::string(255, 'x')), IO_OK);
}

TEST_F(IndexTable, SortingIsAPermutation)
{
    unsigned state = 1;
    for (int i = 0; i < 500; i++) {
        state = state * 1103515245U + 12345U;
        insert("W" + std::to_string(state % 97), "P" + std::to_string(state % 13), i % 7);
    }
    std::vector<std::string> before;
    for (std::int32_t slot = 0; slot < table_.count(); slot++) {
        before.emplace_back(table_.line(slot));
    }
    table_.sort_by_what();
    std::vector<std::string> after;
    for (std::int32_t slot = 0; slot < table_.count(); slot++) {
        after.emplace_back(table_.line(slot));
    }
    std::sort(before.begin(), before.end());
    EXPECT_EQ(after, before);
}

} // namespace
