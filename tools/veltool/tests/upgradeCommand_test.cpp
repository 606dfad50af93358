// veltool upgrade: lists the changes, and makes them in the author's text.
#include "tools/veltool/tests/ownRules.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace veltool::test {
namespace {

const char *const stepRules = "RULES:\n"
                              "  Language Version = 2\n"
                              "  OBJECT: PUMP\n"
                              "    Free Parameters = Yes\n"
                              "  END\n"
                              "  UPGRADE: Version 2\n"
                              "    STEP: S1\n"
                              "      Action = Rename Parameter\n"
                              "      Object Type = PUMP\n"
                              "      Parameter = Lift\n"
                              "      New Name = Head\n"
                              "    END\n"
                              "    STEP: S2\n"
                              "      Action = Change Value\n"
                              "      Object Type = PUMP\n"
                              "      Parameter = Kind\n"
                              "      Old Value = Turbo\n"
                              "      New Value = Centrifugal\n"
                              "    END\n"
                              "    STEP: S3\n"
                              "      Action = Move Parameter\n"
                              "      Object Type = PUMP\n"
                              "      Parameter = Power\n"
                              "      To Object = MOTOR\n"
                              "      New Name = Rating\n"
                              "    END\n"
                              "    STEP: S4\n"
                              "      Action = Rename Object Type\n"
                              "      Object Type = PIPE\n"
                              "      New Name = LINE\n"
                              "    END\n"
                              "    STEP: S5\n"
                              "      Action = Remove Object\n"
                              "      Object Type = PICTURE\n"
                              "    END\n"
                              "    STEP: S6\n"
                              "      Action = Remove Parameter\n"
                              "      Object Type = LINE\n"
                              "      Parameter = Colour\n"
                              "    END\n"
                              "    STEP: S7\n"
                              "      Action = Add Parameter\n"
                              "      Object Type = LINE\n"
                              "      Parameter = Wall\n"
                              "      New Value = Smooth\n"
                              "    END\n"
                              "  END\n"
                              "END\n";

const char *const oldText = "# station\r\n"
                            "LANGUAGE:\r\n"
                            "  Version = 1 # of last year\r\n"
                            "END\r\n"
                            "\r\n"
                            "PUMP: north\r\n"
                            "    Kind   = Turbo # as built\r\n"
                            "    # lift\r\n"
                            "    Lift = 12, \\\r\n"
                            "      13 # measured\r\n"
                            "    Power = 3 [kW] # plate\r\n"
                            "    Note = kept # too\r\n"
                            "END\r\n"
                            "PIPE : long # pipe\r\n"
                            "  Colour = red\r\n"
                            "  Length = 3 # m\r\n"
                            "END\r\n"
                            "PICTURE: p\r\n"
                            "  # gone with it\r\n"
                            "END\r\n"
                            "# the end";

const char *const newText = "# station\r\n"
                            "LANGUAGE:\r\n"
                            "  Version = 2 # of last year\r\n"
                            "END\r\n"
                            "\r\n"
                            "PUMP: north\r\n"
                            "    Kind   = Centrifugal # as built\r\n"
                            "    # lift\r\n"
                            "    Head = 12, \\\r\n"
                            "      13 # measured\r\n"
                            "    Note = kept # too\r\n"
                            "    MOTOR:\r\n"
                            "      Rating = 3 [kW] # plate\r\n"
                            "    END\r\n"
                            "END\r\n"
                            "LINE : long # pipe\r\n"
                            "  Length = 3 # m\r\n"
                            "  Wall = Smooth\r\n"
                            "END\r\n"
                            "# the end";

/// The same with the numbers of a dry run.
std::string numbered(const std::string &changes)
{
    std::istringstream lines(changes);
    std::string all;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t path = line.find(": /") + 2;
        all += line.insert(path, '[' + std::to_string(++number) + "] ") + '\n';
    }
    return all;
}

std::string changes(const std::string &file)
{
    return file + ":9: /PUMP:north/Lift: renamed to \"Head\"\n" + file +
           ":7: /PUMP:north/Kind: changed from \"Turbo\" to \"Centrifugal\"\n" + file +
           ":11: /PUMP:north/Power: moved to /PUMP:north/MOTOR/Rating\n" + file +
           ":14: /PIPE:long: renamed to LINE:long\n" + file +
           ":18: /PICTURE:p: removed with everything in it\n" + file +
           ":15: /LINE:long/Colour: removed; it was \"red\"\n" + file +
           ":14: /LINE:long/Wall: added with the value \"Smooth\"\n" + file +
           ":3: /LANGUAGE/Version: changed from 1 to 2\n";
}

class UpgradeTest : public ::testing::Test
{
protected:
    OwnRules rules_{stepRules};
    TemporaryFolder folder_;
};

TEST_F(UpgradeTest, ChangesOnlyTheNecessaryLines)
{
    const std::string file = folder_.write("old.vel", oldText);
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    const ToolRun run = runTool({"upgrade", file});
    EXPECT_EQ(run.out, changes(file));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(folder_.read("old.vel"), newText);
    EXPECT_EQ(folder_.read("old.vel.bak"), oldText);
    struct stat status;
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);

    const ToolRun again = runTool({"upgrade", file});
    EXPECT_EQ(again.out + again.err, "");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(folder_.read("old.vel.bak"), oldText) << "not touched again";
}

// If only the first word were renamed, it would be another object. The block
// would be written again at the end, without its comments.
TEST_F(UpgradeTest, KeepsTheBlockOfASingletonThatIsWrittenWithTwoWords)
{
    const std::string file = folder_.write("old.vel", "PIPE : PIPE # pipe\n"
                                                      "  # the long one\n"
                                                      "  Length = 3 # m\n"
                                                      "END\n"
                                                      "x = 1\n");
    const ToolRun run = runTool({"upgrade", file});
    EXPECT_EQ(run.status, 0);
    // There is no line for /LANGUAGE/Version: the file has no object above it.
    EXPECT_EQ(run.out, file + ":1: /PIPE: renamed to LINE\n" + file +
                           ":1: /LINE/Wall: added with the value \"Smooth\"\n" + file +
                           ":0: /LANGUAGE/Version: set to 2\n");
    EXPECT_EQ(folder_.read("old.vel"), "LINE : LINE # pipe\n"
                                       "  # the long one\n"
                                       "  Length = 3 # m\n"
                                       "  Wall = Smooth\n"
                                       "END\n"
                                       "x = 1\n"
                                       "LANGUAGE:\n"
                                       "  Version = 2\n"
                                       "END\n");
}

TEST_F(UpgradeTest, DryRunWritesNothing)
{
    const std::string file = folder_.write("old.vel", oldText);
    const ToolRun run = runTool({"upgrade", "--dry-run", file});
    EXPECT_EQ(run.out, numbered(changes(file)));
    EXPECT_EQ(run.out.substr(0, run.out.find('\n')),
              file + ":9: [1] /PUMP:north/Lift: renamed to \"Head\"");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"old.vel"});
    EXPECT_EQ(folder_.read("old.vel"), oldText);
    EXPECT_EQ(runTool({"upgrade", "--dry-run", "-"}, oldText).out, numbered(changes("-")));
    EXPECT_EQ(runTool({"upgrade", "--dry-run", folder_.write("new.vel", "x = 1\n")}).status, 0);
}

// The objects of the changes 6 and 7 have their new type only after change 4.
TEST_F(UpgradeTest, LeavesOutChangesAndTheirDependents)
{
    const std::string file = folder_.write("old.vel", oldText);
    const std::string said = "veltool: " + file +
                             ": change 6 is left out too, because it depends on change 4\n"
                             "veltool: " +
                             file + ": change 7 is left out too, because it depends on change 4\n";
    const std::string made = file + ":9: [1] /PUMP:north/Lift: renamed to \"Head\"\n" + file +
                             ":11: [3] /PUMP:north/Power: moved to /PUMP:north/MOTOR/Rating\n" +
                             file + ":18: [5] /PICTURE:p: removed with everything in it\n" + file +
                             ":3: [8] /LANGUAGE/Version: changed from 1 to 2\n";
    const ToolRun dry = runTool({"upgrade", "--dry-run", "--except", "2,4", file});
    EXPECT_EQ(dry.out, made);
    EXPECT_EQ(dry.err, said);
    EXPECT_EQ(dry.status, 1);
    EXPECT_EQ(folder_.read("old.vel"), oldText);

    const ToolRun run = runTool({"upgrade", "--except", "4", "--except=2", file});
    EXPECT_EQ(run.out, file + ":9: /PUMP:north/Lift: renamed to \"Head\"\n" + file +
                           ":11: /PUMP:north/Power: moved to /PUMP:north/MOTOR/Rating\n" + file +
                           ":18: /PICTURE:p: removed with everything in it\n" + file +
                           ":3: /LANGUAGE/Version: changed from 1 to 2\n");
    EXPECT_EQ(run.err, said);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(folder_.read("old.vel"), "# station\r\n"
                                       "LANGUAGE:\r\n"
                                       "  Version = 2 # of last year\r\n"
                                       "END\r\n"
                                       "\r\n"
                                       "PUMP: north\r\n"
                                       "    Kind   = Turbo # as built\r\n"
                                       "    # lift\r\n"
                                       "    Head = 12, \\\r\n"
                                       "      13 # measured\r\n"
                                       "    Note = kept # too\r\n"
                                       "    MOTOR:\r\n"
                                       "      Rating = 3 [kW] # plate\r\n"
                                       "    END\r\n"
                                       "END\r\n"
                                       "PIPE : long # pipe\r\n"
                                       "  Colour = red\r\n"
                                       "  Length = 3 # m\r\n"
                                       "END\r\n"
                                       "# the end");
    EXPECT_EQ(folder_.read("old.vel.bak"), oldText);
}

TEST_F(UpgradeTest, LeavesOutEverything)
{
    const std::string file = folder_.write("old.vel", oldText);
    const ToolRun run = runTool({"upgrade", "--json", "--except", "1,2,3,4,5,6,7,8", file});
    EXPECT_EQ(run.out, "[]\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"old.vel"});
    EXPECT_EQ(runTool({"upgrade", "-n", "--except", "1,2,3,4,5,6,7,8", file}).status, 0);
}

TEST_F(UpgradeTest, KeepsTheNumbersOfTheDryRunInJson)
{
    const std::string file = folder_.write("old.vel", oldText);
    const ToolRun run = runTool({"upgrade", "--json", "--except", "1,4", file});
    std::vector<int> numbers;
    for (const auto &change : nlohmann::json::parse(run.out)) {
        numbers.push_back(change["number"]);
    }
    EXPECT_EQ(numbers, (std::vector<int>{2, 3, 5, 8}));
}

TEST_F(UpgradeTest, RefusesNumbersThatTheDryRunDoesNotShow)
{
    const std::string file = folder_.write("old.vel", oldText);
    const std::string current = folder_.write("new.vel", "PUMP: a\nEND\n");
    const std::string single = folder_.write("one.vel", "LANGUAGE:\n  Version = 1\nEND\n");
    const auto said = [](const std::vector<std::string> &words) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        return run.err;
    };
    EXPECT_EQ(said({"upgrade", "--except", "2,9", file}),
              "veltool: " + file + ": there is no change 9; the changes are 1 to 8\n");
    EXPECT_EQ(said({"upgrade", "--except", "0", file}),
              "veltool: " + file + ": there is no change 0; the changes are 1 to 8\n");
    EXPECT_EQ(said({"upgrade", "--except", "2", single}),
              "veltool: " + single + ": there is no change 2; the only change is 1\n");
    EXPECT_EQ(said({"upgrade", "--except", "1", current}),
              "veltool: " + current + ": there is no change 1; the file is up to date\n");
    EXPECT_EQ(said({"upgrade", "--except", "1", file, current}),
              "veltool: --except needs a single FILE: each file has its own numbers\n");
    for (const std::string text : {"x", "1,", ",1", "1,,2", "-1", "1 2", "99999999999999999999"}) {
        EXPECT_EQ(said({"upgrade", "--except=" + text, file}),
                  "veltool: --except must be numbers separated by commas, not \"" + text + "\"\n");
    }
    EXPECT_EQ(folder_.read("old.vel"), oldText);
    EXPECT_FALSE(folder_.has("old.vel.bak"));
}

std::string step(const std::string &name, const std::string &fields)
{
    return "    STEP: " + name + "\n" + fields + "    END\n";
}

std::string moveStep(const std::string &type, const std::string &name, const std::string &to,
                     const std::string &newName)
{
    return step(type + ' ' + name, "Action = Move Parameter\nObject Type = " + type +
                                       "\nParameter = " + name + "\nTo Object = " + to +
                                       "\nNew Name = " + newName + '\n');
}

TEST(UpgradeComments, FollowParametersThatMoveAndAreRenamedAfterwards)
{
    const std::string rules =
        "RULES:\n  Language Version = 2\n  OBJECT: PUMP\n    Free Parameters = Yes\n  END\n"
        "  UPGRADE: Version 2\n" +
        moveStep("PUMP", "Power", "MOTOR", "Rating") +
        step("S2", "Action = Rename Parameter\nObject Type = MOTOR\nParameter = Rating\n"
                   "New Name = Rated Power\n") +
        step("S3", "Action = Rename Object Type\nObject Type = MOTOR\nNew Name = DRIVE\n") +
        moveStep("PUMP", "Speed", "DRIVE", "Turns") + moveStep("DRIVE", "Turns", "GEAR", "Rate") +
        step("S6", "Action = Rename Object Type\nObject Type = PUMP\nNew Name = BLOWER\n") +
        "  END\nEND\n";
    const OwnRules own(rules);
    const TemporaryFolder folder;
    const std::string file = folder.write("old.vel", "PUMP: a # one\n"
                                                     "  Power = 3 [kW] # plate\n"
                                                     "  Speed = 50 [s^-1] # by ear\n"
                                                     "END\n");
    const ToolRun run = runTool({"upgrade", file});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    const std::string after = folder.read("old.vel");
    EXPECT_EQ(after.substr(0, after.find("LANGUAGE")), "BLOWER: a # one\n"
                                                       "  DRIVE:\n"
                                                       "    Rated Power = 3 [kW] # plate\n"
                                                       "    GEAR:\n"
                                                       "      Rate = 50 [s^-1] # by ear\n"
                                                       "    END\n"
                                                       "  END\n"
                                                       "END\n")
        << run.out;
}

TEST_F(UpgradeTest, GivesJsonOverManyFiles)
{
    const std::string file = folder_.write("old.vel", oldText);
    const std::string current = folder_.write("new.vel", "PUMP: a\nEND\n");
    const ToolRun run = runTool({"upgrade", "--json", folder_.path("missing.vel"), current, file});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "veltool: " + folder_.path("missing.vel") + ": No such file or directory\n");
    const auto array = nlohmann::json::parse(run.out);
    ASSERT_EQ(array.size(), 8U);
    const nlohmann::json expected = {{"file", file},
                                     {"line", 9},
                                     {"path", "/PUMP:north/Lift"},
                                     {"message", "renamed to \"Head\""},
                                     {"number", 1}};
    EXPECT_EQ(array[0], expected);
    EXPECT_FALSE(folder_.has("new.vel.bak"));
    EXPECT_TRUE(folder_.has("old.vel.bak"));
}

TEST_F(UpgradeTest, RefusesContainersAndStandardInput)
{
    const std::string container = folder_.write("a.res", "*INFO\n                   0\n*ENDINFO\n");
    const ToolRun run = runTool({"upgrade", container});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("veltool extract"), std::string::npos) << run.err;
    const ToolRun standard = runTool({"upgrade", "-"}, oldText);
    EXPECT_EQ(standard.status, 2);
    EXPECT_EQ(standard.out, "");
    EXPECT_EQ(standard.err, "veltool: cannot edit standard input in place; name a file\n");
}

TEST(Upgrade, UpgradesTheShippedExample)
{
    const TemporaryFolder folder;
    std::ifstream in(std::string(std::getenv("VEL_SOURCE_DIR")) + "/examples/old-version.vel");
    std::ostringstream text;
    text << in.rdbuf();
    const std::string file = folder.write("old.vel", text.str());
    const std::string libraries = "ZOT5_VEL_LIBS='rules.vel;upgrades.vel' ";
    EXPECT_EQ(runShell(libraries + "$VELTOOL upgrade " + file).status, 0);
    EXPECT_EQ(runShell(libraries + "$VELTOOL upgrade --dry-run " + file).status, 0);
    const ToolRun check = runShell(libraries + "$VELTOOL check " + file);
    EXPECT_EQ(check.out + check.err, "");
    // Every comment outside the removed statements still exists.
    std::istringstream lines(text.str());
    for (std::string line; std::getline(lines, line);) {
        if (line.find('#') != std::string::npos) {
            EXPECT_NE(folder.read("old.vel").find(line.substr(line.find('#'))), std::string::npos)
                << line;
        }
    }
}

} // namespace
} // namespace veltool::test
