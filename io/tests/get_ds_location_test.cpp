// Tests searches of the index; compares them with a scan of all lines.
#include "io/Src/Main/get_ds_location.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

class Location : public ::testing::Test
{
protected:
    Location() : report_(env_)
    {
        report_.set_routine(collect_message);
        take_messages();
    }

    void insert(const char *what, const char *where, std::int32_t when, char status = 'Y')
    {
        std::string line = format_index_line(status, what, where, when, 200, next_);
        ASSERT_EQ(table_.insert_index(report_, line), IO_OK);
        next_ += 1000;
    }

    std::string list(int code, const located_datasets &found) const
    {
        if (code != IO_OK) {
            return "code " + std::to_string(code);
        }
        std::string text;
        for (const located_dataset &record : found) {
            text += std::string(record.what) + ":" + record.where + ":" +
                    std::to_string(record.when) + " ";
        }
        return text;
    }

    std::string find(const char *what, const char *where, std::int32_t when)
    {
        located_datasets found;
        int code = find_datasets(report_, table_, what, where, when, found);
        return list(code, found);
    }

    std::string find_by(location_mode mode, const char *what, const char *where, std::int32_t when)
    {
        located_datasets found;
        int code = get_ds_location(report_, table_, mode, what, where, when, found);
        return list(code, found);
    }

    io_memory_env env_;
    io_reporter report_;
    index_table table_;
    std::int64_t next_ = 36;
};

TEST_F(Location, AnEmptyIndexHasNoMatches)
{
    EXPECT_EQ(find("A", "B", -1), "code 17");
    EXPECT_EQ(find("*", "*", -1), "code 17");
    EXPECT_EQ(take_messages(), "");
}

TEST_F(Location, TheLargestWhenComesFirst)
{
    insert("A", "B", 2);
    insert("A", "B", 10);
    insert("A", "B", 9);
    EXPECT_EQ(find("A", "B", -1), "A:B:10 A:B:9 A:B:2 ");
}

TEST_F(Location, AWhenIsNotAPrefix)
{
    insert("A", "B", 50);
    insert("A", "B", 5);
    insert("A", "B", 500);
    EXPECT_EQ(find("A", "B", 5), "A:B:5 ");
    EXPECT_EQ(find("A", "B", 0), "code 17");
    EXPECT_EQ(find("A", "", 5), "code 17");
}

TEST_F(Location, ANegativeWhenIsFoundByANegativeOnly)
{
    insert("A", "B", -7);
    EXPECT_EQ(find("A", "B", 7), "code 17");
    EXPECT_EQ(find("A", "B", -1), "A:B:-7 ");
}

TEST_F(Location, PatternsInWhat)
{
    insert("TB", "Z", 1);
    insert("TA", "Z", 1);
    insert("TC", "Z", 1, 'N');
    insert("TA", "Y", 1);
    insert("P", "Z", 1);
    EXPECT_EQ(find("T*", "Z", 1), "TA:Z:1 TB:Z:1 ");
    EXPECT_EQ(find("[PT]?", "Z", 1), "TA:Z:1 TB:Z:1 ");
    EXPECT_EQ(find("T*", "X", 1), "code 17");
}

TEST_F(Location, PatternsInWhereAndInBoth)
{
    insert("T", "ZB", 1);
    insert("T", "ZA", 2);
    insert("U", "ZA", 2);
    EXPECT_EQ(find("T", "Z*", -1), "T:ZA:2 T:ZB:1 ");
    EXPECT_EQ(find("T", "Z*", 1), "T:ZB:1 ");
    EXPECT_EQ(find("*", "*", 2), "T:ZA:2 U:ZA:2 ");
    EXPECT_EQ(find("T*", "*B", -1), "T:ZB:1 ");
}

TEST_F(Location, EqualWhensAreOrderedByWhatFromTheThirdCharacter)
{
    insert("AAz", "P", 3);
    insert("BBa", "P", 3);
    insert("CCm", "P", 4);
    insert("D", "P", 3);
    // The first two characters do not count, so BBa comes before AAz. Clients
    // rely on this.
    EXPECT_EQ(find("*", "P", -1), "CCm:P:4 D:P:3 BBa:P:3 AAz:P:3 ");
    // The search is by WHERE, so equal keys are in the order of the texts of
    // length and position: 1036, 3036, 36.
    EXPECT_EQ(find("*", "P", 3), "BBa:P:3 D:P:3 AAz:P:3 ");
}

TEST_F(Location, FindsTheSameAsASearchOfEveryLine)
{
    struct name
    {
        std::string what;
        std::string where;
        std::int32_t when;
        bool operator<(const name &other) const
        {
            // The order of the lines as texts; ESC is less than all other characters.
            auto key = [](const name &one) {
                return one.what + "\x1b" + one.where + "\x1b" + std::to_string(one.when) + "\x1b";
            };
            return key(*this) < key(other);
        }
    };
    std::multiset<name> names;
    std::uint32_t state = 7;
    auto next = [&](std::uint32_t below) {
        state = state * 1664525U + 1013904223U;
        return (state >> 10) % below;
    };
    for (int i = 0; i < 3000; i++) {
        name one = {"W" + std::to_string(next(12)), "P" + std::to_string(next(3)),
                    static_cast<std::int32_t>(next(200))};
        insert(one.what.c_str(), one.where.c_str(), one.when);
        names.insert(one);
    }
    for (int i = 0; i < 500; i++) {
        std::string what = "W" + std::to_string(next(14));
        std::string where = "P" + std::to_string(next(4));
        auto when = static_cast<std::int32_t>(next(220));
        std::string expected;
        for (const name &one : names) {
            if (one.what == what && one.where == where && one.when == when) {
                expected += what + ":" + where + ":" + std::to_string(when) + " ";
            }
        }
        EXPECT_EQ(find(what.c_str(), where.c_str(), when), expected.empty() ? "code 17" : expected);
        located_datasets found;
        int code = find_datasets(report_, table_, what.c_str(), where.c_str(), -1, found);
        auto count = std::count_if(names.begin(), names.end(), [&](const name &one) {
            return one.what == what && one.where == where;
        });
        EXPECT_EQ(code, count == 0 ? IO_NOT_FOUND : IO_OK);
        EXPECT_EQ(found.size(), static_cast<std::size_t>(count));
    }
}

TEST_F(Location, DeletedEntriesAreNeverReturned)
{
    insert("A", "B", 1, 'N');
    insert("A", "B", 2);
    EXPECT_EQ(find("A", "B", -1), "A:B:2 ");
    EXPECT_EQ(find("*", "*", -1), "A:B:2 ");
    EXPECT_EQ(find("*", "B", -1), "A:B:2 ");
    EXPECT_EQ(find("A", "*", -1), "A:B:2 ");
    EXPECT_EQ(find("A", "B", 1), "code 17");
}

TEST_F(Location, TheSearchByWhatRefusesPatterns)
{
    insert("A", "B", 1);
    EXPECT_EQ(find_by(IO_SORT_WHAT, "A*", "B", 1), "code 12");
    EXPECT_EQ(take_messages(), "INST: get_ds_sortwhat_location with IO_SORT_WHAT when WHAT is a"
                               " wildcard in get_ds_location\n");
    EXPECT_EQ(find_by(IO_SORT_WHAT, "A", nullptr, -1), "A:B:1 ");
    EXPECT_EQ(find_by(IO_SORT_WHERE, "", "B", -1), "A:B:1 ");
}

TEST_F(Location, NamesTooLongForASlotDoNotMatch)
{
    insert("A", "B", 1);
    std::string longest(300, 'x');
    EXPECT_EQ(find(longest.c_str(), "B", 1), "code 17");
    EXPECT_EQ(find("*", longest.c_str(), 1), "code 17");
}

TEST_F(Location, SmallArraysReceiveTheSizesThatAreNeeded)
{
    insert("A", "B", 1);
    insert("A", "B", 2);
    std::vector<char> strings(4 * IO_STRING_SLOT);
    std::int32_t whens[2] = {};
    std::int64_t offsets[4] = {};
    IO_data data;
    data.strings = strings.data();
    data.strings_size = 4;
    data.integers = whens;
    data.integers_size = 1;
    data.offsets = offsets;
    data.offsets_size = 4;
    located_datasets scratch;
    EXPECT_EQ(locate_dataset(report_, table_, "A", "B", -1, scratch, data), IO_NO_ROOM);
    EXPECT_EQ(data.strings_size, 4);
    EXPECT_EQ(data.integers_size, 2);
    EXPECT_EQ(data.offsets_size, 4);
    EXPECT_EQ(whens[0], 0);
    EXPECT_EQ(locate_dataset(report_, table_, "A", "B", -1, scratch, data), IO_OK);
    EXPECT_EQ(whens[0], 2);
    EXPECT_STREQ(data.strings + IO_STRING_SLOT, "B");
    EXPECT_EQ(offsets[0], 1036);
    EXPECT_EQ(offsets[1], 200);
}

TEST_F(Location, TheTraceShowsTheSearches)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    insert("A", "B", 1);
    insert("A", "B", 2);
    IO_data data;
    located_datasets scratch;
    EXPECT_EQ(locate_dataset(report_, table_, "A", "B", -1, scratch, data), IO_NO_ROOM);
    EXPECT_EQ(env_.trace, "TRACE> sorting whatlist in locate_dataset\n"
                          "TRACE> start to locate A:B:-1\n"
                          "TRACE> matched 2 datasets in locate_dataset, 0 were deleted\n"
                          "TRACE> about to sort 2 datasets by WHEN\n"
                          "TRACE> sorted 2 datasets by WHEN\n");
    char strings[2 * IO_STRING_SLOT];
    std::int32_t when = 0;
    std::int64_t offsets[2] = {};
    data.strings = strings;
    data.integers = &when;
    data.offsets = offsets;
    data.strings_size = data.offsets_size = 2;
    data.integers_size = 1;
    env_.trace.clear();
    EXPECT_EQ(locate_dataset(report_, table_, "A", "B", 2, scratch, data), IO_OK);
    EXPECT_EQ(env_.trace, "TRACE> start to locate A:B:2\nTRACE> Returning 1 matches\n");
}

TEST_F(Location, ABadLineFailsEverySearchThatReadsIt)
{
    ASSERT_EQ(table_.insert_index(report_, "Y\x1b"
                                           "A\x1b"
                                           "B\x1b"
                                           "5"),
              IO_OK);
    const std::string missing = "parseindex: bad index: missing dslength for dataset A:B:5\n";
    const std::string of_all = "locate_dataset: main dataset location failed\n";
    EXPECT_EQ(find("A", "B", -1), "code 12");
    EXPECT_EQ(take_messages(), missing + "get_ds_location: parseindex failed\n" + of_all);
    EXPECT_EQ(find("*", "B", -1), "code 12");
    EXPECT_EQ(take_messages(), missing +
                                   "get_ds_location: parsewhere failed\n"
                                   "locate_all_where: get_ds_location failed\n" +
                                   of_all);
    EXPECT_EQ(find("A", "*", -1), "code 12");
    EXPECT_EQ(take_messages(), missing +
                                   "get_ds_location: parseindex failed\n"
                                   "locate_all_what: get_ds_location failed\n" +
                                   of_all);
    EXPECT_EQ(find("*", "*", -1), "code 12");
    EXPECT_EQ(take_messages(), missing + "get_ds_location: parseindex failed\n" + of_all);
}

TEST_F(Location, ParseindexSkipsEmptyFieldsAndNamesMissingOnes)
{
    located_dataset record = {};
    EXPECT_EQ(parseindex(report_,
                         "Y\x1b\x1b"
                         "A\x1b"
                         "B\x1b"
                         "5\x1b"
                         "200\x1b"
                         "36",
                         record),
              IO_OK);
    EXPECT_STREQ(record.what, "A");
    EXPECT_EQ(record.when, 5);
    EXPECT_EQ(record.length, 200);
    EXPECT_EQ(record.position, 36);
    auto message = [&](const char *line) {
        EXPECT_EQ(parseindex(report_, line, record), IO_PARSE_ERROR);
        return take_messages();
    };
    EXPECT_EQ(message(""), "parseindex: bad index: missing status code\n");
    EXPECT_EQ(message("Y"), "parseindex: bad index: missing what\n");
    EXPECT_EQ(message("Y\x1b"
                      "A"),
              "parseindex: bad index: missing where in dataset A:?:?\n");
    EXPECT_EQ(message("Y\x1b"
                      "A\x1b"
                      "B"),
              "parseindex: bad index: missing when in dataset A:B:?\n");
    EXPECT_EQ(message("Y\x1b"
                      "A\x1b"
                      "B\x1b"
                      "5"),
              "parseindex: bad index: missing dslength for dataset A:B:5\n");
    EXPECT_EQ(message("Y\x1b"
                      "A\x1b"
                      "B\x1b"
                      "5\x1b"
                      "200"),
              "parseindex: bad index: missing location for dataset A:B:5\n");
}

} // namespace
