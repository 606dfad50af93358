// veltool merge: the resulting text, and the conflicts.
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

const std::string base = "# Cooling water\n"
                         "DOMAIN: Pipe\n"
                         "  Kind = Fluid\n"
                         "  Location = Inlet Side, \\\n"
                         "    Outlet Side\n"
                         "  BOUNDARY: in\n"
                         "    Flow = 0.5   # as measured\n"
                         "  END\n"
                         "  BOUNDARY: out\n"
                         "    Kind = Outlet\n"
                         "  END\n"
                         "END\n";

/// The text with one part of it replaced.
std::string with(std::string text, const std::string &part, const std::string &other)
{
    const std::size_t at = text.find(part);
    if (at == std::string::npos) {
        ADD_FAILURE() << part << " is not in the text";
    } else {
        text.replace(at, part.size(), other);
    }
    return text;
}

const std::string outlet = "  BOUNDARY: out\n"
                           "    Kind = Outlet\n"
                           "  END\n";

class MergeTest : public ::testing::Test
{
protected:
    ToolRun merge(const std::string &ours, const std::string &theirs,
                  const std::string &from = base)
    {
        return runTool({"merge", folder_.write("base", from), folder_.write("ours", ours),
                        folder_.write("theirs", theirs)});
    }

    std::string said(const std::string &message) const
    {
        return "veltool: " + folder_.path("ours") + ": " + message + '\n';
    }

    TemporaryFolder folder_;
};

void expectClean(const ToolRun &run, const std::string &result)
{
    EXPECT_EQ(run.out, result);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST_F(MergeTest, TakesChangesOfTheirsAndKeepsTheTextOfOurs)
{
    const std::string ours = with(with(base, "Cooling", "Hot"), "Kind = Fluid", "Kind  =  Solid");
    expectClean(merge(ours, with(base, "0.5", "0.7")), with(ours, "0.5", "0.7"));
    expectClean(merge(ours, with(base, "0.5   # as measured", "0.7 # corrected")),
                with(ours, "0.5   # as measured", "0.7 # corrected"));
}

// The mark is not data. The result has it only if OURS has it.
TEST_F(MergeTest, TheByteOrderMarkIsThatOfOurs)
{
    const std::string mark = "\xEF\xBB\xBF";
    const std::string ours = with(base, "Kind = Fluid", "Kind = Solid");
    const std::string theirs = with(base, "0.5", "0.7");
    const std::string both = with(ours, "0.5", "0.7");
    expectClean(merge(mark + ours, theirs), mark + both);
    expectClean(merge(ours, mark + theirs), both);
    expectClean(merge(ours, theirs, mark + base), both);
    expectClean(merge(mark + ours, mark + theirs, mark + base), mark + both);
    expectClean(merge(mark + "x = 1\n", "x = 2\n", "x = 1\n"), mark + "x = 2\n");
    expectClean(merge("x = 1\ny = 1\n", mark + "x = 2\n", "x = 1\n"), "x = 2\ny = 1\n");
    EXPECT_EQ(merge(mark + "x = 1\n", mark + "x = 2\n", mark + "x = 3\n").out,
              mark + "<<<<<<< ours\nx = 1\n=======\nx = 2\n>>>>>>> theirs\n");
}

// Without an empty comment, the backslash would continue the line. The second
// object is written from its data, because THEIRS has it in two blocks.
TEST_F(MergeTest, AValueThatEndsInABackslashKeepsTheLineAfterIt)
{
    const std::string from = "A:\n  x = 1 # one\n  y = 2\nEND\n";
    expectClean(merge(with(from, "y = 2", "y = 3"), with(from, "1 # one", "C:\\ # two"), from),
                "A:\n  x = C:\\ # two\n  y = 3\nEND\n");
    expectClean(merge(with(from, "x = 1 # one", "x   = 1"), with(from, "1 # one", "C:\\ #"), from),
                "A:\n  x   = C:\\ #\n  y = 2\nEND\n");
    expectClean(
        merge(with(from, "2", "3"), from + "B:\n  p = C:\\ #\nEND\nB:\n  q = 1\nEND\n", from),
        "A:\n  x = 1 # one\n  y = 3\nEND\nB:\n  p = C:\\ #\n  q = 1\nEND\n");
}

TEST_F(MergeTest, AChangedLineKeepsTheCommentOfOurs)
{
    const std::string ours = with(base, "# as measured", "# by us");
    const ToolRun run = merge(ours, with(base, "0.5   # as measured", "0.7 # corrected"));
    EXPECT_EQ(run.out, with(ours, "0.5", "0.7"));
    EXPECT_EQ(run.err, said("1 comment of THEIRS is not in the result"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(MergeTest, WrapsLinesLikeOurs)
{
    const std::string ours = with(base, "Inlet Side, \\\n    Outlet", "Inlet Side, \\\n  Outlet");
    expectClean(merge(ours, with(base, "Outlet Side", "Outlet Side, Lid")),
                with(ours, "Outlet Side", "Outlet Side, Lid"));
}

TEST_F(MergeTest, AddsAtTheSamePlaceWithComments)
{
    const std::string ours = with(base, "Fluid", "Solid");
    const std::string added = "  # A new one\n"
                              "  BOUNDARY: mid\n"
                              "    Kind = Wall # why\n"
                              "  END\n";
    expectClean(merge(ours, with(base, outlet, added + outlet)),
                with(ours, outlet, added + outlet));
    expectClean(merge(ours, with(base, "  Kind = Fluid\n", "  First = 1\n  Kind = Fluid\n")),
                with(ours, "  Kind = Solid\n", "  First = 1\n  Kind = Solid\n"));
    expectClean(merge(ours, base + "LAST:\nEND\n"), ours + "LAST:\nEND\n");
}

TEST_F(MergeTest, ACommentThatOursHasIsNotRepeated)
{
    const std::string ours = with(base, "Fluid", "Solid");
    expectClean(merge(ours, with(base, "DOMAIN", "TITLE:\nEND\nDOMAIN")), ours + "TITLE:\nEND\n");
}

TEST_F(MergeTest, RemovesEveryPlaceThatTheirsDeleted)
{
    const std::string twice = "A: x\n  p = 1\n  q = 1\nEND\nA: x\n  p = 2 # again\nEND\nb = 1\n";
    expectClean(merge(with(twice, "b = 1", "b = 2"),
                      with(with(twice, "  p = 1\n", ""), "  p = 2 # again\n", ""), twice),
                "A: x\n  q = 1\nEND\nA: x\nEND\nb = 2\n");
    expectClean(merge(with(twice, "b = 1", "b = 2"), "b = 1\n", twice), "b = 2\n");
}

TEST_F(MergeTest, KeepsWhatOursDeletedOrAdded)
{
    const std::string ours = with(with(base, outlet, ""), "Fluid\n", "Fluid\n  New = 1\n");
    expectClean(merge(ours, with(base, "0.5", "0.7")), with(ours, "0.5", "0.7"));
}

TEST_F(MergeTest, TheSameChangeOnBothSidesIsNotAConflict)
{
    const std::string ours =
        with(with(base, "0.5", "0.7"), outlet, "  WALL: w\n    x = 1\n  END\n");
    const std::string theirs =
        with(with(base, "= 0.5 ", "=0.7 "), outlet, "  WALL: w\n    y = 2\n    x = 1\n  END\n");
    expectClean(merge(ours, theirs), with(ours, "    x = 1\n", "    y = 2\n    x = 1\n"));
}

TEST_F(MergeTest, IfOneSideIsUnchangedTheResultIsTheOther)
{
    const std::string changed = with(with(base, "Cooling", "Hot"), outlet, "");
    expectClean(merge(changed, base), changed);
    expectClean(merge(base, changed), changed);
    expectClean(merge(changed, changed), changed);
}

TEST_F(MergeTest, TwoValuesAreAConflict)
{
    const std::string ours = with(base, "0.5   # as measured", "0.6 # ours");
    const ToolRun run = merge(ours, with(with(base, "0.5", "0.7"), "Kind = Fluid", "Kind = Solid"));
    EXPECT_EQ(run.out, with(with(ours, "Kind = Fluid", "Kind = Solid"), "    Flow = 0.6 # ours\n",
                            "<<<<<<< ours\n"
                            "    Flow = 0.6 # ours\n"
                            "=======\n"
                            "    Flow = 0.7   # as measured\n"
                            ">>>>>>> theirs\n"));
    EXPECT_EQ(run.err, said("/DOMAIN:Pipe/BOUNDARY:in/Flow: changed on both sides"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(MergeTest, AddedDifferentlyIsAConflict)
{
    const ToolRun run = merge("a = 1\nx = 1\n", "x = 2\na = 1\n", "a = 1\n");
    EXPECT_EQ(run.out, "a = 1\n<<<<<<< ours\nx = 1\n=======\nx = 2\n>>>>>>> theirs\n");
    EXPECT_EQ(run.err, said("/x: added on both sides, with different contents"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(MergeTest, DeletedInOneAndChangedInTheOtherIsAConflict)
{
    const std::string changed = with(base, "Kind = Outlet", "Kind = Inlet");
    const std::string deleted = with(base, outlet, "");
    const std::string block = with(outlet, "Outlet", "Inlet");
    const ToolRun theirsDeleted = merge(changed, deleted);
    EXPECT_EQ(theirsDeleted.out,
              with(changed, block, "<<<<<<< ours\n" + block + "=======\n>>>>>>> theirs\n"));
    EXPECT_EQ(theirsDeleted.err,
              said("/DOMAIN:Pipe/BOUNDARY:out: changed in ours, deleted in theirs"));
    EXPECT_EQ(theirsDeleted.status, 1);
    const ToolRun oursDeleted = merge(deleted, changed);
    EXPECT_EQ(oursDeleted.out,
              with(changed, block, "<<<<<<< ours\n=======\n" + block + ">>>>>>> theirs\n"));
    EXPECT_EQ(oursDeleted.err,
              said("/DOMAIN:Pipe/BOUNDARY:out: deleted in ours, changed in theirs"));
    EXPECT_EQ(oursDeleted.status, 1);
}

TEST_F(MergeTest, AnObjectThatOneDeletedAndTheOtherReducedIsDeleted)
{
    const std::string part = with(base, "    Kind = Outlet\n", "");
    const std::string all = with(base, outlet, "");
    expectClean(merge(with(part, "0.5", "0.7"), all), with(all, "0.5", "0.7"));
    expectClean(merge(all, part), all);
}

TEST_F(MergeTest, AParameterInOneAndASingletonInTheOtherIsAConflict)
{
    const ToolRun run = merge("a = 1\nX = 1\n", "a = 1\nX:\n  y = 1\nEND\n", "a = 1\n");
    EXPECT_EQ(run.out, "a = 1\n<<<<<<< ours\nX = 1\n=======\nX:\n  y = 1\nEND\n>>>>>>> theirs\n");
    EXPECT_EQ(run.status, 1);
    expectClean(merge("a = 2\nX = 1\n", "a = 1\nX:\n  y = 1\nEND\n", "a = 1\nX = 1\n"),
                "a = 2\nX:\n  y = 1\nEND\n");
}

TEST_F(MergeTest, EveryReaderRefusesAConflict)
{
    const std::string file = folder_.write("conflict", merge("x = 1\n", "x = 2\n", "x = 0\n").out);
    const ToolRun run = runTool({"get", file, "/x"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "veltool: " + file +
                           ":1: a conflict marker of a merge; keep one of the two sides and "
                           "delete the marker lines\n");
}

TEST_F(MergeTest, AFileThatCannotBeEditedSafelyIsOneConflict)
{
    // A statement after the last line would become part of it.
    const std::string ours = "z = 2\nw = 1 \\\n";
    const std::string theirs = "y = 1\nz = 1\n";
    const ToolRun run = merge(ours, theirs, "z = 1\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "<<<<<<< ours\n" + ours + "=======\n" + theirs + ">>>>>>> theirs\n");
    EXPECT_EQ(run.err,
              said("cannot be merged statement by statement; the whole file is one conflict"));
}

TEST_F(MergeTest, KeepsLineEndsAndAMissingLastOne)
{
    expectClean(merge("a = 1\r\nb = 2", "a = 1\nb = 1\nc = 1\n", "a = 1\r\nb = 1\r\n"),
                "a = 1\r\nb = 2\r\nc = 1\r\n");
    expectClean(merge("a = 1\nb = 2", "a = 3\nb = 1\n", "a = 1\nb = 1\n"), "a = 3\nb = 2");
}

TEST_F(MergeTest, AnEmptyBaseAddsBoth)
{
    expectClean(merge("A:\n  x = 1\nEND\n", "A:\n  y = 1\nEND\nB:\nEND\n", ""),
                "A:\n  y = 1\n  x = 1\nEND\nB:\nEND\n");
}

TEST_F(MergeTest, WritesOursInPlaceOrElsewhere)
{
    const std::string b = folder_.write("b", "x = 1\ny = 1\n");
    const std::string o = folder_.write("o", "x = 2\ny = 1\n");
    const std::string t = folder_.write("t", "x = 1\ny = 2\n");
    const ToolRun run = runTool({"merge", "-o", o, b, o, t});
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(folder_.read("o"), "x = 2\ny = 2\n");
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"b", "o", "t"}));

    const ToolRun conflict = runTool({"merge", "--output=" + o, "--name", "case.vel",
                                      "--marker-size", "9", b, o, folder_.write("t", "x = 3\n")});
    EXPECT_EQ(conflict.status, 1);
    EXPECT_EQ(conflict.err, "veltool: case.vel: /x: changed on both sides\n"
                            "veltool: case.vel: /y: changed in ours, deleted in theirs\n");
    EXPECT_EQ(folder_.read("o").substr(0, 36), "<<<<<<<<< ours\nx = 2\n=========\nx = 3");
}

TEST_F(MergeTest, ReadsStandardInputOnce)
{
    const std::string b = folder_.write("b", "x = 1\n");
    EXPECT_EQ(runTool({"merge", b, b, "-"}, "x = 2\n").out, "x = 2\n");
    EXPECT_EQ(runTool({"merge", b, "-", "-"}, "x = 2\n").status, 2);
}

TEST_F(MergeTest, MergesTheDataOfContainersIntoText)
{
    const std::string def = folder_.path("a.def");
    folder_.write("a", "x = 1\ny = 1\n");
    ASSERT_EQ(runShell("cd " + folder_.path() +
                       " && echo 3 | $VELTOOL ds write a.def Zones EVERY 0 INTR && "
                       "$VELTOOL embed a a.def")
                  .status,
              0);
    const std::string bytes = folder_.read("a.def");
    const std::string b = folder_.write("b", "x = 1\ny = 2\n");
    const std::string t = folder_.write("t", "x = 3\ny = 2\n");
    expectClean(runTool({"merge", b, def, t}), "x = 3\ny = 1\n");
    const ToolRun run = runTool({"merge", "-o", def, b, def, t});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("veltool embed"), std::string::npos) << run.err;
    EXPECT_EQ(folder_.read("a.def"), bytes);
}

TEST_F(MergeTest, AFileThatCannotBeReadIsAFailureAndNothingIsWritten)
{
    const std::string good = folder_.write("good", "x = 1\n");
    const std::string bad[] = {folder_.write("cut", "FLOW:\n  x = 1\n"), folder_.path("missing"),
                               folder_.path(), folder_.write("cut.res", "*INFO\n"),
                               folder_.write("binary", std::string("\x7F"
                                                                   "ELF\x02\0\n=",
                                                                   8))};
    for (const std::string &file : bad) {
        for (std::size_t place = 0; place < 3; ++place) {
            std::vector<std::string> words = {"merge", "-o", folder_.path("out"), good, good, good};
            words[3 + place] = file;
            const ToolRun run = runTool(words);
            EXPECT_EQ(run.status, 2) << file << place;
            EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U) << run.err;
            EXPECT_FALSE(folder_.has("out"));
        }
    }
}

TEST_F(MergeTest, SurvivesTruncationAndDamage)
{
    const std::string theirs = with(base, "0.5", "0.7");
    for (std::size_t length = 0; length < base.size(); length += 9) {
        std::string damaged = base.substr(0, length);
        EXPECT_LE(merge(damaged, theirs).status, 2) << length;
        damaged = base;
        damaged[length] = static_cast<char>(damaged[length] ^ 0x44);
        const ToolRun run = merge(theirs, damaged);
        EXPECT_LE(run.status, 2) << length;
        EXPECT_EQ(run.out.empty(), run.status == 2) << length << run.err;
    }
}

TEST_F(MergeTest, AShortWriteAndUsageErrorsAreFailures)
{
    const std::string b = folder_.write("b", "x = 1\n");
    const std::string all = b + ' ' + b + ' ' + b;
    EXPECT_EQ(runShell("$VELTOOL merge " + all + " > /dev/full").status, 2);
    EXPECT_EQ(runShell("$VELTOOL merge -o /dev/full " + all).status, 2);
    EXPECT_EQ(runShell("$VELTOOL merge -o " + folder_.path("no/where ") + all).status, 2);
    for (const char *words : {"", "a b", "a b c d", "--marker-size 0 a b c",
                              "--marker-size x a b c", "--output", "--no a b c"}) {
        EXPECT_EQ(
            runShell("cd " + folder_.path() + "; touch a b c; $VELTOOL merge " + words).status, 2)
            << words;
    }
}

} // namespace
} // namespace veltool::test
