// Tests the path table of a handle: its growth and its look-ups.
#include "velapilt/src/velHandle_p.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

std::int32_t buckets(const velHandlePtr &handle)
{
    static_cast<void>(handle->table.find("/nothing"));
    handle->table.presize(0); // enters pending nodes
    return handle->table.buckets();
}

std::string paramName(std::int32_t i)
{
    return "p" + std::to_string(i);
}

/// The bucket count of a table that grew one entry at a time.
std::int32_t grownTo(std::int64_t entries)
{
    std::int32_t count = 41;
    for (std::int64_t before = 0; before < entries; ++before) {
        if (before / 3 > count) {
            count = velChooseBucketCount(before / 3 * 2);
        }
    }
    return count;
}

TEST(VelPathTable, GrowsAtTheEntryThatFinds126)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(handle->table.buckets(), 41);
    EXPECT_EQ(handle->table.entries(), 0);
    for (std::int32_t i = 0; i < 125; ++i) { // the root is the first entry
        ASSERT_EQ(said(velCreateParam(handle.get(), paramName(i).c_str(), "")), "");
    }
    EXPECT_EQ(handle->table.entries(), 126);
    EXPECT_EQ(grownTo(126), 41);
    EXPECT_EQ(said(velCreateParam(handle.get(), "one more", "")), "");
    EXPECT_EQ(grownTo(127), 127);
    // Presizing for 0 entries grows the table as an insert does.
    EXPECT_EQ(buckets(handle), 127);
    EXPECT_EQ(havePath(handle.get(), "/p0"), 1);
    EXPECT_EQ(havePath(handle.get(), "/one more"), 1);
}

TEST(VelPathTable, ObjectsAndParametersGrowItInTheSameWay)
{
    const velHandlePtr handle(velCreateHandle());
    std::int64_t entries = 1; // the root
    for (std::int32_t i = 0; i < 9000; ++i) {
        const std::string name = (i % 3 == 0 ? "T:n" : "p") + std::to_string(i);
        const char *error = i % 3 == 0 ? velCreateObject(handle.get(), name.c_str(), false)
                                       : velCreateParam(handle.get(), name.c_str(), "v");
        ASSERT_EQ(said(error), "");
        ASSERT_EQ(handle->table.entries(), ++entries);
        if (i % 100 == 0) {
            // A look-up below a parent with many children enters the pending parameters.
            ASSERT_EQ(havePath(handle.get(), "/never"), 0);
        }
    }
    ASSERT_EQ(havePath(handle.get(), "/never"), 0);
    EXPECT_EQ(handle->table.buckets(), grownTo(entries));
}

TEST(VelPathTable, AParsePresizesForHalfTheLines)
{
    std::string text;
    for (int i = 0; i < 6000; ++i) {
        text += "# nothing\n";
    }
    const velHandlePtr handle = parsed(text);
    // root + 3000 expected: 2 · (3001 / 3) = 2000
    EXPECT_EQ(handle->table.buckets(), 2017);
    EXPECT_EQ(handle->table.entries(), 1);
}

TEST(VelPathTable, ALoadPresizesForHalfTheLinesAndTheRoot)
{
    const TemporaryFolder folder;
    const auto bucketsFor = [&](const std::string &content) {
        const std::string file = folder.write("case.vel", content);
        const velHandlePtr handle(velCreateHandle());
        EXPECT_EQ(said(loadVELFile(handle.get(), file.c_str(), "vel")), "");
        return handle->table.buckets();
    };
    std::string lines;
    for (int i = 0; i < 249; ++i) {
        lines += "#\n";
    }
    EXPECT_EQ(bucketsFor(lines), 41);        // the root and 124 expected
    EXPECT_EQ(bucketsFor(lines + "#"), 127); // 126 / 3 is above 41
    EXPECT_EQ(bucketsFor(lines + "#\n"), 127);
}

TEST(VelPathTable, EverythingIsFoundAfterEachGrowth)
{
    const velHandlePtr handle(velCreateHandle());
    std::vector<std::string> paths;
    for (int i = 0; i < 40; ++i) {
        const std::string top = "/T:" + paramName(i);
        ASSERT_EQ(said(velCreateObject(handle.get(), top.c_str(), false)), "");
        paths.push_back(top);
        for (int j = 0; j < 40; ++j) {
            paths.push_back(top + "/" + paramName(j));
            ASSERT_EQ(said(velCreateParam(handle.get(), paths.back().c_str(), "")), "");
        }
        for (const std::string &path : paths) {
            ASSERT_EQ(havePath(handle.get(), path.c_str()), 1) << path;
            ASSERT_EQ(havePath(handle.get(), (path + "x").c_str()), 0) << path;
        }
    }
}

TEST(VelPathTable, TypesAndNamesAreNotConfused)
{
    const velHandlePtr handle = parsed("A:\n"
                                       "B: C\n"
                                       "x = 1\n"
                                       "END\n"
                                       "END\n"
                                       "AB: C\n"
                                       "END\n"
                                       "C = 2\n");
    for (const char *path : {"/", "/A", "/A/B:C", "/A/B:C/x", "/AB:C", "/C"}) {
        EXPECT_EQ(havePath(handle.get(), path), 1) << path;
    }
    for (const char *path : {"/AB", "/A/B", "/A/C", "/A:B", "/A:B/C", "/A/BC", "/B:C", "/A/x",
                             "/A:B:C", "/A/B:C:x", "/a", "/A/B:C/X", "/AB:c", "/C/x"}) {
        EXPECT_EQ(havePath(handle.get(), path), 0) << path;
    }
}

TEST(VelPathTable, LongPathsAreFoundToo)
{
    const velHandlePtr handle(velCreateHandle());
    std::string path;
    for (int i = 0; i < 30; ++i) {
        path += "/" + std::string(300, static_cast<char>('a' + i % 26));
        ASSERT_EQ(said(velCreateObject(handle.get(), path.c_str(), false)), "");
    }
    EXPECT_EQ(path.size(), 9030U);
    EXPECT_EQ(havePath(handle.get(), path.c_str()), 1);
    EXPECT_EQ(havePath(handle.get(), (path + "x").c_str()), 0);
    EXPECT_EQ(said(deleteObjH(handle.get(), path.c_str())), "");
    EXPECT_EQ(havePath(handle.get(), path.c_str()), 0);
    EXPECT_EQ(havePath(handle.get(), path.substr(0, path.size() - 301).c_str()), 1);
}

// The table remembers found nodes; it must forget a removed one.
TEST(VelPathTable, ARemovedNodeIsNotFoundAgain)
{
    const velHandlePtr handle(velCreateHandle());
    for (int round = 0; round < 50; ++round) {
        for (const char *path : {"/A", "/A/B:c", "/A/B:c/D"}) {
            ASSERT_EQ(said(velCreateObject(handle.get(), path, false)), "");
        }
        ASSERT_EQ(said(velCreateParam(handle.get(), "/A/B:c/D/x", std::to_string(round).c_str())),
                  "");
        ASSERT_EQ(valueAt(handle, "/A/B:c/D/x"), std::to_string(round));
        ASSERT_EQ(valueAt(handle, "/A/B:c/D/x"), std::to_string(round));
        ASSERT_EQ(said(deleteObjH(handle.get(), "/A")), "");
        for (const char *path : {"/A", "/A/B:c", "/A/B:c/D", "/A/B:c/D/x"}) {
            ASSERT_EQ(havePath(handle.get(), path), 0) << path;
        }
    }
    EXPECT_EQ(handle->table.entries(), 1);
}

} // namespace
