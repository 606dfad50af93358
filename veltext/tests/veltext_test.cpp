// The public header: reads, compares and merges files as another program would do it.
// The sample in docs/veltext.md shows that this header is enough for a program.
#include "veltext/veltext.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

const char *const pipe =
    "DOMAIN: Pipe # as built\r\n  Length = 2.5 [m]\r\n  Kind = Fluid\r\nEND\r\n";

std::string edited(const std::string &path, const std::string &value)
{
    const CommandText text{std::string(pipe)};
    TextEdit edit(text.source());
    edit.setValue(path, value);
    return edit.bytes();
}

TEST(CommandTextTest, HasTheTextAndTheData)
{
    const CommandText text{std::string(pipe)};
    EXPECT_EQ(text.source().bytes(), pipe);
    EXPECT_EQ(text.source().lineEnd(0), "\r\n");
    EXPECT_EQ(text.value("/DOMAIN:Pipe/Length"), "2.5 [m]");
    EXPECT_EQ(text.value("/DOMAIN:Pipe"), std::nullopt);
    EXPECT_EQ(text.value("/DOMAIN:Pipe/Width"), std::nullopt);
    std::string paths;
    for (TreeWalk walk = text.walk("/DOMAIN:Pipe"); walk.node() != nullptr; walk.step()) {
        paths += walk.path() + ' ';
    }
    EXPECT_EQ(paths, "/DOMAIN:Pipe /DOMAIN:Pipe/Length /DOMAIN:Pipe/Kind ");
    EXPECT_EQ(text.walk("/NOTHING").node(), nullptr);
}

TEST(CommandTextTest, NamesTheLineOfTheMistake)
{
    try {
        const CommandText text(std::string("A:\nEND\nb c\n"), "case.vel");
        FAIL();
    } catch (const Error &error) {
        EXPECT_EQ(error.message(), "case.vel:3: parseVELLineH: syntax error near \"b c\"");
        EXPECT_EQ(error.line(), 3U);
    }
    EXPECT_THROW(static_cast<void>(CommandText::read("/nowhere/at all")), Error);
}

TEST(Diff, OwnsItsResult)
{
    std::vector<Change> changes;
    {
        const CommandText before{std::string(pipe)};
        const CommandText after{std::string("DOMAIN: Pipe\nLength = 3 [m]\nWALL: w\nEND\nEND\n")};
        changes = diff(before, after);
        EXPECT_TRUE(diff(before, before).empty());
    }
    std::string lines;
    for (const Change &change : changes) {
        lines += std::to_string(static_cast<int>(change.kind)) + ' ' + change.path + ' ' +
                 change.oldValue.value_or("-") + ' ' + change.newValue.value_or("-") + '\n';
    }
    EXPECT_EQ(lines, "2 /DOMAIN:Pipe/Length 2.5 [m] 3 [m]\n"
                     "1 /DOMAIN:Pipe/Kind Fluid -\n"
                     "0 /DOMAIN:Pipe/WALL:w - -\n");
}

Merge mergedWith(const std::string &ours, const std::string &theirs)
{
    return merge(CommandText(std::string(pipe)), CommandText(ours), CommandText(theirs));
}

TEST(MergeTest, KeepsTheTextOfOurs)
{
    const Merge merged =
        mergedWith(edited("/DOMAIN:Pipe/Length", "3 [m]"), edited("/DOMAIN:Pipe/Kind", "Solid"));
    EXPECT_EQ(merged.bytes,
              "DOMAIN: Pipe # as built\r\n  Length = 3 [m]\r\n  Kind = Solid\r\nEND\r\n");
    EXPECT_TRUE(merged.conflicts.empty());
    EXPECT_FALSE(merged.isOneConflict);
    EXPECT_EQ(merged.lostComments, 0U);
}

TEST(MergeTest, MarksConflictsAndNamesThem)
{
    const Merge merged =
        mergedWith(edited("/DOMAIN:Pipe/Kind", "Porous"), edited("/DOMAIN:Pipe/Kind", "Solid"));
    EXPECT_EQ(merged.bytes, "DOMAIN: Pipe # as built\r\n  Length = 2.5 [m]\r\n"
                            "<<<<<<< ours\r\n  Kind = Porous\r\n=======\r\n  Kind = Solid\r\n"
                            ">>>>>>> theirs\r\nEND\r\n");
    ASSERT_EQ(merged.conflicts.size(), 1U);
    EXPECT_EQ(merged.conflicts[0].path, "/DOMAIN:Pipe/Kind");
    EXPECT_EQ(merged.conflicts[0].reason, "changed on both sides");
}

TEST(MergeTest, ReturnsTheOnlyChangedVersionUnchanged)
{
    const std::string changed = edited("/DOMAIN:Pipe/Kind", "Solid") + "# at the end";
    EXPECT_EQ(mergedWith(pipe, changed).bytes, changed);
    EXPECT_EQ(mergedWith(changed, pipe).bytes, changed);
    EXPECT_EQ(mergedWith(changed, changed).bytes, changed);
}

} // namespace
} // namespace veltext
