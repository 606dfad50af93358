// Tests the differences between a text and loaded data, and the order in a text.
#include "veltext/textChanges.h"

#include "velapilt/src/velapilt.h"
#include "veltext/error.h"
#include "veltext/tests/newHandle.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

using test::newHandle;

CommandText before()
{
    return CommandText(std::string("DOMAIN: Pipe\n  Length = 2.5 [m]\n  Kind = Fluid\nEND\n"));
}

const std::string after = "DOMAIN: Pipe\n  Length = 3 [m]\n  WALL: w\n  END\nEND\n";

/// A line for each difference.
std::string linesOf(const std::vector<Change> &changes)
{
    std::string lines;
    for (const Change &change : changes) {
        lines += "+-~"[static_cast<int>(change.kind)] + (' ' + change.path) + " | " +
                 change.oldValue.value_or("none") + " | " + change.newValue.value_or("none") + '\n';
    }
    return lines;
}

const std::string fromBeforeToAfter = "~ /DOMAIN:Pipe/Length | 2.5 [m] | 3 [m]\n"
                                      "- /DOMAIN:Pipe/Kind | Fluid | none\n"
                                      "+ /DOMAIN:Pipe/WALL:w | none | none\n";

void load(velHandle *handle, const std::string &text, std::uint32_t flags = 0)
{
    velArray lines(velArrayKind::Strings);
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.addString(line);
    }
    ASSERT_EQ(parseVELData(handle, &lines, flags), nullptr);
}

std::string blocks(int levels)
{
    std::string text;
    for (int i = 0; i < levels; ++i) {
        text += "A:\n";
    }
    for (int i = 0; i < levels; ++i) {
        text += "END\n";
    }
    return text;
}

TEST(TextChangesTest, ComparesATextWithLoadedData)
{
    const velHandlePtr data = newHandle();
    load(data.get(), after);
    EXPECT_EQ(linesOf(changesTo(data.get(), before())), fromBeforeToAfter);
    EXPECT_TRUE(changesTo(data.get(), CommandText(after)).empty());
}

TEST(TextChangesTest, LeavesOutDataThatOnlyLibrariesState)
{
    const velHandlePtr data = newHandle();
    load(data.get(), "RULES:\n  Version = 1\n  RULE: r\n    Type = Real\n  END\nEND\n",
         velFlagLibrary);
    load(data.get(), after);
    EXPECT_EQ(linesOf(changesTo(data.get(), before())), fromBeforeToAfter);
}

TEST(TextChangesTest, KnowsTheOrderOfTheText)
{
    const CommandText text(std::string("A: a\nx = 1\nB:\nEND\ny = 2\nC: c\nEND\nEND\nz = 3\n"));
    SiblingOrder order(text);
    EXPECT_EQ(order.before("/A:a"), "");
    EXPECT_EQ(order.before("/z"), "A:a");
    EXPECT_EQ(order.before("/A:a/x"), "");
    EXPECT_EQ(order.before("/A:a/B"), "x");
    EXPECT_EQ(order.before("/A:a/y"), "B");
    EXPECT_EQ(order.before("/A:a/C:c"), "y");
    EXPECT_EQ(order.before("/A:a/nothing"), "");
}

TEST(TextChangesTest, RefusesTextsThatAreTooDeep)
{
    EXPECT_NO_THROW(requireComparable(CommandText(blocks(10'000)), "deep.vel"));
    try {
        requireComparable(CommandText(blocks(10'001)), "deep.vel");
        FAIL();
    } catch (const Error &error) {
        EXPECT_EQ(error.message(),
                  "deep.vel: nests deeper than 10,000 levels, too deep to compare");
    }
}

} // namespace
} // namespace veltext
