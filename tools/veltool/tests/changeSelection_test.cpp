// Leaving out changes of an upgrade: which changes depend on which, and that all
// changes together give the upgrade.
#include "tools/veltool/support/changeSelection.h"

#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/ruleCheck.h"
#include "tools/veltool/support/upgradeChanges.h"
#include "tools/veltool/tests/toolRun.h"
#include "veltext/treeData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace veltool::test {
namespace {

using velparser::ChangeKind;
using velparser::UpgradeChange;
using veltext::SourceText;
using veltext::TreeData;
using Changes = std::vector<UpgradeChange>;

UpgradeChange change(ChangeKind kind, const std::string &path, const std::string &newPath = {},
                     const std::string &oldValue = {}, const std::string &newValue = {})
{
    return {kind, path, newPath, oldValue, newValue, "changed"};
}

velHandlePtr parsed(const std::string &text)
{
    velHandlePtr handle = newHandle();
    parseText(handle.get(), SourceText(text), "text");
    return handle;
}

/// "made 1 3; 4 needs 2": the result of each change.
std::string select(const std::string &text, const Changes &changes,
                   const std::set<std::size_t> &except)
{
    const velHandlePtr data = parsed(text);
    const ChangeSelection selection = makeChanges(data.get(), changes, except);
    std::string words = "made";
    for (const std::size_t number : selection.made) {
        words += ' ' + std::to_string(number);
    }
    for (const Dependence &dependence : selection.dependent) {
        words += "; " + std::to_string(dependence.number) + " needs " +
                 std::to_string(dependence.needed);
    }
    return words;
}

/// The data after the changes, as "PATH = value" and "PATH", sorted.
std::vector<std::string> dataAfter(const std::string &text, const Changes &changes,
                                   const std::set<std::size_t> &except)
{
    const velHandlePtr data = parsed(text);
    static_cast<void>(makeChanges(data.get(), changes, except));
    std::vector<std::string> lines;
    const TreeData after(data.get());
    for (const TreeData::Item &item : after.items()) {
        lines.push_back(item.value ? item.path + " = " + *item.value : item.path);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string oldExample()
{
    std::ifstream in(std::string(std::getenv("VEL_SOURCE_DIR")) + "/examples/old-version.vel");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(ChangeSelection, FollowsAParameterThroughItsNamesAndPlaces)
{
    const std::string text = "PUMP: a\n  Lift = 1\n  Speed = 2\nEND\n";
    const Changes changes{
        change(ChangeKind::RenamedParameter, "/PUMP:a/Lift", "/PUMP:a/Head"),
        change(ChangeKind::ChangedValue, "/PUMP:a/Head", "", "1", "10"),
        change(ChangeKind::MovedParameter, "/PUMP:a/Head", "/PUMP:a/DUTY/Head"),
        change(ChangeKind::RenamedObject, "/PUMP:a", "/BLOWER:a"),
        change(ChangeKind::ChangedValue, "/BLOWER:a/DUTY/Head", "", "10", "11"),
        change(ChangeKind::AddedParameter, "/BLOWER:a/DUTY/Kind", "", "", "x"),
        change(ChangeKind::RemovedParameter, "/BLOWER:a/Speed", "", "2"),
    };
    EXPECT_EQ(select(text, changes, {}), "made 1 2 3 4 5 6 7");
    EXPECT_EQ(select(text, changes, {1}), "made 4 7; 2 needs 1; 3 needs 2; 5 needs 3; 6 needs 3");
    EXPECT_EQ(select(text, changes, {2}), "made 1 3 4 6 7; 5 needs 2");
    EXPECT_EQ(select(text, changes, {3}), "made 1 2 4 7; 5 needs 3; 6 needs 3");
    EXPECT_EQ(select(text, changes, {4}), "made 1 2 3; 5 needs 4; 6 needs 4; 7 needs 4");
    EXPECT_EQ(select(text, changes, {5, 6, 7}), "made 1 2 3 4");
    EXPECT_EQ(dataAfter(text, changes, {5, 7}),
              (std::vector<std::string>{"/BLOWER:a", "/BLOWER:a/DUTY", "/BLOWER:a/DUTY/Head = 10",
                                        "/BLOWER:a/DUTY/Kind = x", "/BLOWER:a/Speed = 2"}));
}

// No name is overwritten: a name is free only after the change that frees it.
TEST(ChangeSelection, FindsNamesThatAreStillInUse)
{
    const std::string text = "PUMP: a\n  x = 1\n  y = 2\nEND\nPIPE: b\nEND\nLINE: b\nEND\n";
    const Changes changes{
        change(ChangeKind::RemovedParameter, "/PUMP:a/x", "", "1"),
        change(ChangeKind::RenamedParameter, "/PUMP:a/y", "/PUMP:a/x"),
        change(ChangeKind::AddedParameter, "/PUMP:a/y", "", "", "3"),
        change(ChangeKind::RemovedObject, "/LINE:b"),
        change(ChangeKind::RenamedObject, "/PIPE:b", "/LINE:b"),
    };
    EXPECT_EQ(select(text, changes, {}), "made 1 2 3 4 5");
    EXPECT_EQ(select(text, changes, {1}), "made 4 5; 2 needs 1; 3 needs 2");
    EXPECT_EQ(select(text, changes, {2}), "made 1 4 5; 3 needs 2");
    EXPECT_EQ(select(text, changes, {4}), "made 1 2 3; 5 needs 4");
    EXPECT_EQ(dataAfter(text, changes, {1, 4}), dataAfter(text, {}, {}));
}

TEST(ChangeSelection, MovesIntoAnObjectThatAnotherMoveHasMade)
{
    const std::string text = "A:\n  x = 1\n  y = 2\nEND\n";
    const Changes changes{
        change(ChangeKind::MovedParameter, "/A/x", "/A/B/x"),
        change(ChangeKind::MovedParameter, "/A/y", "/A/B/y"),
        change(ChangeKind::RenamedObject, "/A/B", "/A/C"),
        change(ChangeKind::SetVersion, "/LANGUAGE/Version", "", "", "2"),
    };
    EXPECT_EQ(select(text, changes, {1}), "made 2 3 4");
    EXPECT_EQ(select(text, changes, {1, 2}), "made 4; 3 needs 1");
    EXPECT_EQ(dataAfter(text, changes, {1}),
              (std::vector<std::string>{"/A", "/A/C", "/A/C/y = 2", "/A/x = 1", "/LANGUAGE",
                                        "/LANGUAGE/Version = 2"}));
}

TEST(ChangeSelection, RefusesWrongOrEmptyChanges)
{
    const Changes other{change(ChangeKind::ChangedValue, "/A/x", "", "5", "6")};
    EXPECT_THROW(static_cast<void>(select("A:\n  x = 1\nEND\n", other, {})), Failure);
    const Changes unknown{change(ChangeKind::Unknown, "/A/x"), change(ChangeKind::Unknown, "/A/y")};
    EXPECT_THROW(static_cast<void>(select("A:\n  x = 1\nEND\n", unknown, {1})), Failure);
}

TEST(ChangeSelection, ChangesTheShippedExampleLikeTheRules)
{
    const std::string text = oldExample();
    RuleCheck rules;
    const Upgrade upgrade = rules.upgrade(SourceText(text), "text");
    ASSERT_GT(upgrade.changes.size(), 30U);
    const velHandlePtr data = parsed(text);
    const ChangeSelection all = makeChanges(data.get(), upgrade.changes, {});
    EXPECT_EQ(all.made.size(), upgrade.changes.size());
    EXPECT_TRUE(veltext::haveSameData(TreeData(data.get()), upgrade.result));
}

// Any set of changes is left out. Each change is then made, left out, or depends
// on an earlier change that is not made; and the text can be edited.
TEST(ChangeSelection, LeavesOutAnyChangesOfTheShippedExample)
{
    const std::string text = oldExample();
    RuleCheck rules;
    const Upgrade upgrade = rules.upgrade(SourceText(text), "text");
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::set<std::size_t> except;
        for (std::size_t i = random() % 5 + 1; i > 0; --i) {
            except.insert(random() % upgrade.changes.size() + 1);
        }
        const velHandlePtr data = parsed(text);
        const ChangeSelection selection = makeChanges(data.get(), upgrade.changes, except);
        std::set<std::size_t> notMade = except;
        for (const Dependence &dependence : selection.dependent) {
            EXPECT_LT(dependence.needed, dependence.number);
            EXPECT_TRUE(notMade.contains(dependence.needed));
            notMade.insert(dependence.number);
        }
        Changes made;
        for (const std::size_t number : selection.made) {
            EXPECT_FALSE(notMade.contains(number));
            made.push_back(upgrade.changes[number - 1]);
        }
        EXPECT_EQ(made.size() + notMade.size(), upgrade.changes.size());
        const TreeData wanted(data.get());
        const std::string bytes =
            veltext::keepLayout(SourceText(text), wanted, pathChangesIn(made));
        EXPECT_TRUE(veltext::haveSameData(TreeData(parsed(bytes).get()), wanted));
    }
}

} // namespace
} // namespace veltool::test
