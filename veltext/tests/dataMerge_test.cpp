// Tests what a merge changes in loaded data.
#include "veltext/dataMerge.h"

#include "veltext/tests/newHandle.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

std::string textOf(const std::optional<MergeItem> &item)
{
    if (!item) {
        return "nothing\n";
    }
    return item->isParameter ? "= " + item->text + '\n' : item->text;
}

/// Each step: its path, with '!' for a conflict, and what is there.
std::string stepsOf(const std::string &base, const std::string &ours, const std::string &theirs)
{
    const CommandText data(ours);
    std::string lines;
    for (const DataMergeStep &step :
         planDataMerge(CommandText(base), data.tree(), CommandText(theirs))) {
        lines += step.path + (step.isConflict ? " !" : "");
        lines += step.previous.empty() ? "\n" : " after " + step.previous + '\n';
        lines += "ours: " + textOf(step.ours) + "theirs: " + textOf(step.theirs);
    }
    return lines;
}

TEST(DataMergeTest, TakesWhatTheyChanged)
{
    EXPECT_EQ(stepsOf("A: a\nx = 1\ny = 1\nEND\n", "A: a\nx = 1\ny = 2\nEND\n",
                      "A: a\nx = 3\ny = 1\nEND\n"),
              "/A:a/x\nours: = 1\ntheirs: = 3\n");
}

TEST(DataMergeTest, GivesObjectsAsBlocks)
{
    EXPECT_EQ(stepsOf("A: a\nEND\n", "A: a\nz = 1\nEND\n",
                      "A: a\nB: b\nx = 1\nC:\ny = \nEND\nEND\nD:\nEND\nEND\n"),
              "/A:a/B:b\nours: nothing\n"
              "theirs: B : b\nx = 1\nC :\ny = \nEND\nEND\n"
              "/A:a/D\nours: nothing\ntheirs: D :\nEND\n");
}

TEST(DataMergeTest, SaysWhatANewItemFollows)
{
    EXPECT_EQ(stepsOf("A: a\nx = 1\nEND\n", "A: a\nw = 1\nx = 1\nEND\n",
                      "A: a\nx = 1\ny = 1\nB:\nEND\nEND\n"),
              "/A:a/y after x\nours: nothing\ntheirs: = 1\n"
              "/A:a/B after x\nours: nothing\ntheirs: B :\nEND\n");
}

TEST(DataMergeTest, ReportsConflicts)
{
    const std::string base = "A: a\nx = 1\nB:\ny = 1\nEND\nEND\n";
    EXPECT_EQ(stepsOf(base, "A: a\nx = 2\nEND\n", "A: a\nx = 3\nB:\ny = 2\nEND\nEND\n"),
              "/A:a/x !\nours: = 2\ntheirs: = 3\n"
              "/A:a/B ! after x\nours: nothing\ntheirs: B :\ny = 2\nEND\n");
    EXPECT_EQ(stepsOf(base, "A: a\nx = 2\nB:\ny = 1\nEND\nEND\n", "B: b\nEND\n"),
              "/B:b\nours: nothing\ntheirs: B : b\nEND\n"
              "/A:a !\nours: A : a\nx = 2\nB :\ny = 1\nEND\nEND\ntheirs: nothing\n");
}

TEST(DataMergeTest, LeavesWhatOnlyWeChanged)
{
    const std::string base = "A: a\nx = 1\nEND\n";
    EXPECT_EQ(stepsOf(base, "A: a\nx = 2\nEND\n", base), "");
    EXPECT_EQ(stepsOf(base, "B: b\nEND\n", base), "");
    EXPECT_EQ(stepsOf(base, "A: a\nx = 2\nEND\n", "A: a\nx = 2\nEND\n"), "");
}

TEST(DataMergeTest, LeavesTheLibraries)
{
    const velHandlePtr data = test::newHandle();
    const char *const library[] = {"RULES:", "  Version = 1", "END"};
    ASSERT_EQ(loadLibraryData(data.get(), library, 3), nullptr);
    const char *const lines[] = {"A: a", "  x = 1", "END"};
    ASSERT_EQ(loadVELData(data.get(), lines, 3), nullptr);
    const CommandText base(std::string("A: a\nx = 1\nEND\n"));
    const CommandText theirs(std::string("B: b\nEND\n"));
    const std::vector<DataMergeStep> steps = planDataMerge(base, data.get(), theirs);
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].path, "/B:b");
    EXPECT_EQ(steps[1].path, "/A:a");
    EXPECT_FALSE(steps[1].theirs.has_value());
}

} // namespace
} // namespace veltext
