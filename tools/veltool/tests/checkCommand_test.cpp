// veltool check, rules check and explain: findings with their lines, in many files,
// with one or more processes.
#include "tools/veltool/tests/ownRules.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

const char *const pumpRules = "RULES:\n"
                              "  Language Version = 2\n"
                              "  OBJECT: PUMP\n"
                              "    Parents = /\n"
                              "    Required Parameters = Kind\n"
                              "    Optional Parameters = Head\n"
                              "    PARAMETER: Kind\n"
                              "      Allowed Values = Piston, Screw\n"
                              "    END\n"
                              "    PARAMETER: Head\n"
                              "      Type = Real\n"
                              "      Units = m\n"
                              "      Upper Bound = 100 [m]\n"
                              "    END\n"
                              "  END\n"
                              "  UPGRADE: Version 2\n"
                              "    STEP: Lift is called head\n"
                              "      Action = Rename Parameter\n"
                              "      Object Type = PUMP\n"
                              "      Parameter = Lift\n"
                              "      New Name = Head\n"
                              "    END\n"
                              "  END\n"
                              "END\n";

const char *const good = "PUMP: a\n  Kind = Screw\nEND\n";
const char *const bad = "# two\n"
                        "PUMP: a\n"
                        "  Kind = Scrw\n"
                        "END\n"
                        "PUMP: b\n"
                        "  Head = 1\n"
                        "END\n"
                        "PUMP: a\n"
                        "  Head = 200 \\\n"
                        "    [m]\n"
                        "END\n";

std::string badFindings(const std::string &file)
{
    return file +
           ":3: /PUMP:a/Kind: \"Scrw\" is not allowed here; did you mean Screw? [not-allowed]\n" +
           file + ":9: /PUMP:a/Head: 200 [m] is above the upper bound 100 [m] [above-bound]\n" +
           file + ":6: /PUMP:b/Head: 1 has no unit; write it as 1 [m] [missing-unit]\n" + file +
           ":5: /PUMP:b: required parameter \"Kind\" is missing [missing-parameter]\n";
}

class CheckTest : public ::testing::Test
{
protected:
    OwnRules rules_{pumpRules};
    TemporaryFolder folder_;
};

TEST_F(CheckTest, PrintsFindingsWithTheirLines)
{
    const std::string file = folder_.write("bad.vel", bad);
    const ToolRun run = runTool({"check", file});
    EXPECT_EQ(run.out, badFindings(file));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(folder_.read("bad.vel"), bad);

    const ToolRun quiet = runTool({"check", folder_.write("good.vel", good)});
    EXPECT_EQ(quiet.out + quiet.err, "");
    EXPECT_EQ(quiet.status, 0);
}

TEST_F(CheckTest, GivesJson)
{
    const std::string file = folder_.write("bad.vel", bad);
    const auto array = nlohmann::json::parse(runTool({"check", "--json", file, file}).out);
    ASSERT_EQ(array.size(), 8U);
    const nlohmann::json expected = {
        {"file", file},
        {"line", 3},
        {"path", "/PUMP:a/Kind"},
        {"message", "\"Scrw\" is not allowed here; did you mean Screw?"},
        {"id", "not-allowed"}};
    EXPECT_EQ(array[0], expected);
    const std::string fine = folder_.write("good.vel", good);
    EXPECT_EQ(runTool({"check", "--json", fine, fine}).out, "[]\n");
}

TEST_F(CheckTest, ReadsStandardInputAndContainers)
{
    const ToolRun run = runTool({"check", "-"}, bad);
    EXPECT_EQ(run.out, badFindings("-"));
    EXPECT_EQ(run.status, 1);

    const std::string file = folder_.path("case.def");
    ASSERT_EQ(runShell("echo 1 | $VELTOOL ds write '" + file +
                       "' X EVERY 0 INTR && $VELTOOL embed '" + folder_.write("bad.vel", bad) +
                       "' '" + file + "'")
                  .status,
              0);
    EXPECT_EQ(runTool({"check", file}).out, badFindings(file));
}

TEST_F(CheckTest, UpgradesInMemoryFirst)
{
    const std::string text = "PUMP: a\n  Kind = Screw\n  Lift = 3\nEND\n";
    const std::string file = folder_.write("old.vel", text);
    const ToolRun run = runTool({"check", file});
    EXPECT_EQ(run.out,
              file + ":3: /PUMP:a/Head: 3 has no unit; write it as 3 [m] [missing-unit]\n");
    EXPECT_EQ(run.err, "veltool: " + file +
                           ": was upgraded in memory before the check (2 changes); veltool upgrade "
                           "--dry-run lists the changes\n");
    EXPECT_EQ(folder_.read("old.vel"), text);
}

TEST_F(CheckTest, GivesUnreadableFilesAnEntryInTheJson)
{
    const std::string broken = folder_.write("broken.vel", "PUMP: a\nno sense\n");
    const std::string missing = folder_.path("missing.vel");
    const std::string fine = folder_.write("bad.vel", bad);
    for (const char *jobs : {"1", "3"}) {
        const ToolRun run = runTool({"check", "--json", "--jobs", jobs, missing, fine, broken});
        EXPECT_EQ(run.status, 2);
        const auto array = nlohmann::json::parse(run.out);
        ASSERT_EQ(array.size(), 6U);
        const nlohmann::json unreadable = {{"file", missing},
                                           {"line", 0},
                                           {"path", ""},
                                           {"message", "No such file or directory"},
                                           {"id", "error"}};
        EXPECT_EQ(array[0], unreadable);
        const nlohmann::json syntax = {{"file", broken},
                                       {"line", 2},
                                       {"path", ""},
                                       {"message", "parseVELLineH: syntax error near \"no sense\""},
                                       {"id", "error"}};
        EXPECT_EQ(array[5], syntax);
    }
}

TEST_F(CheckTest, ReportsAByteOrderMarkAndIgnoresIt)
{
    const std::string file = folder_.write("bad.vel", std::string("\xEF\xBB\xBF") + bad);
    const ToolRun run = runTool({"check", file});
    EXPECT_EQ(run.out, badFindings(file));
    EXPECT_EQ(run.err, "veltool: " + file + ": begins with a byte order mark, which is ignored\n");
    EXPECT_EQ(
        runTool({"check", folder_.write("good.vel", std::string("\xEF\xBB\xBF") + good)}).status,
        0);
}

TEST_F(CheckTest, NamesTheLineOfTheOpenBlock)
{
    const std::string file = folder_.write("open.vel", "PUMP: a\nEND\nPUMP: b\n  Kind = Screw\n");
    EXPECT_EQ(runTool({"check", file}).err,
              "veltool: " + file + ":3: 1 missing END statement(s) in input\n");
}

TEST_F(CheckTest, SaysThatAMergeIsNotResolved)
{
    const std::string file =
        folder_.write("conflict.vel", "PUMP: a\n<<<<<<< ours\n  Kind = Screw\n=======\n"
                                      "  Kind = Piston\n>>>>>>> theirs\nEND\n");
    EXPECT_EQ(runTool({"check", file}).err,
              "veltool: " + file +
                  ":2: a conflict marker of a merge; keep one of the two sides and delete the "
                  "marker lines\n");
}

TEST_F(CheckTest, GivesFileAndLineOfMistakesInLibraries)
{
    const std::string fine = folder_.write("good.vel", good);
    const OwnRules faulty("RULES:\n  OBJECT: PUMP\n    Typo = 1\n  END\nEND\n");
    const ToolRun run = runTool({"check", fine});
    EXPECT_EQ(run.err.rfind("veltool: " + faulty.path() + ":3: /RULES/OBJECT:PUMP/Typo: ", 0), 0U)
        << run.err;
    const OwnRules broken("RULES:\n  no statement\nEND\n");
    const ToolRun refused = runTool({"check", fine});
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("syntax error near \"no statement\" (line 2)\n"), std::string::npos)
        << refused.err;
}

TEST_F(CheckTest, SuggestsTheSemicolonBetweenLibraries)
{
    setenv("ZOT5_VEL_LIBS", "rules.vel:rules.vel", 1); // OwnRules restores it
    const ToolRun run = runTool({"check", folder_.write("good.vel", good)});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("; separate the names in ZOT5_VEL_LIBS by ';', not by ':'\n"),
              std::string::npos)
        << run.err;
}

std::string nested(std::size_t levels)
{
    std::string text;
    for (std::size_t i = 0; i < levels; ++i) {
        text += "A: a\n";
    }
    for (std::size_t i = 0; i < levels; ++i) {
        text += "END\n";
    }
    return text;
}

// The output and the memory of these commands grow with the square of the depth.
// The address sanitizer needs more address space than any useful limit.
#ifdef __SANITIZE_ADDRESS__
constexpr const char *memoryLimit = "";
#else
constexpr const char *memoryLimit = "ulimit -v 2000000; ";
#endif

TEST_F(CheckTest, ObjectsNestedTooDeepAreRefused)
{
    const std::string deep = folder_.write("deep.vel", nested(100'001));
    const std::string least = folder_.write("least.vel", nested(10'001));
    const std::string most = folder_.write("most.vel", nested(10'000));
    const std::string none = folder_.write("none.vel", "");
    const std::string other = folder_.write("other.vel", "x = 1\n");
    const std::string def = folder_.path("some.def");
    ASSERT_EQ(runShell("echo 3 | $VELTOOL ds write " + def + " Zones EVERY 0 INTR").status, 0);
    const struct
    {
        std::string command;
        std::string words;
    } runs[] = {{"check ", ""},        {"format ", ""},
                {"tree ", ""},         {"upgrade ", ""},
                {"set ", " /A:a/x 1"}, {"explain ", " /A:a"},
                {"find ", " A"},       {"embed ", " " + def},
                {"diff ", " " + none}, {"merge " + none + ' ', ' ' + other}};
    for (const auto &[command, words] : runs) {
        for (const std::string &file : {deep, least}) {
            const ToolRun run = runShell(memoryLimit + ("$VELTOOL " + command) + file + words);
            EXPECT_EQ(run.status, 2) << command;
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.err, "veltool: " + file +
                                   ": objects are nested more than 10000 levels deep; this "
                                   "command cannot read such a file\n");
        }
    }
    EXPECT_EQ(runTool({"format", "-o", "/dev/null", most}).status, 0);
    EXPECT_EQ(runShell("$VELTOOL tree " + most + " >/dev/null").status, 0);
    EXPECT_EQ(runShell("$VELTOOL diff " + most + ' ' + none + " >/dev/null").status, 1);
}

TEST_F(CheckTest, ContinuesWithTheNextFileIfOneFails)
{
    const std::string one = folder_.write("one.vel", bad);
    const std::string broken = folder_.write("broken.vel", "PUMP: a\nno sense\n");
    const std::string missing = folder_.path("missing.vel");
    const std::string fine = folder_.write("fine.vel", good);
    for (const char *jobs : {"1", "3"}) {
        const ToolRun run =
            runTool({"check", "--jobs", jobs, missing, one, broken, fine, one, broken});
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, badFindings(one) + badFindings(one));
        const std::string syntax =
            "veltool: " + broken + ":2: parseVELLineH: syntax error near \"no sense\"\n";
        EXPECT_EQ(run.err,
                  "veltool: " + missing + ": No such file or directory\n" + syntax + syntax);
    }
    EXPECT_EQ(runTool({"check", fine, one, fine}).status, 1);
}

// The files are pipes. The shell can open them only after the workers have opened
// them, so it kills the workers while they read.
TEST_F(CheckTest, AFileWhoseWorkerDiedHasAnEntryInTheJson)
{
    const std::string one = folder_.path("one.vel");
    const std::string two = folder_.path("two.vel");
    const ToolRun run =
        runShell("mkfifo " + one + ' ' + two + " || exit 99\n" + "$VELTOOL check --json --jobs 2 " +
                 one + ' ' + two + " &\n" + "exec 3>" + one + " 4>" + two + '\n' +
                 "kill -9 $(cat /proc/$!/task/$!/children)\n" + "wait $!");
    EXPECT_EQ(run.status, 2);
    const auto entry = [](const std::string &file) {
        return R"({"file":")" + file +
               R"(","line":0,"path":"","message":"its worker process ended unexpectedly; try --jobs 1","id":"error"})";
    };
    EXPECT_EQ(run.out, "[\n" + entry(one) + ",\n" + entry(two) + "\n]\n");
    EXPECT_EQ(run.err, "veltool: " + one +
                           ": its worker process ended unexpectedly; try --jobs 1\nveltool: " +
                           two + ": its worker process ended unexpectedly; try --jobs 1\n");
}

TEST_F(CheckTest, JobsDoNotChangeTheOutput)
{
    std::vector<std::string> words = {"check"};
    for (int i = 0; i < 40; ++i) {
        const std::string name = "f" + std::to_string(i) + ".vel";
        words.push_back(folder_.write(name, i % 3 ? good : bad));
    }
    const ToolRun alone = runTool(words);
    words.insert(words.begin() + 1, {"--json", "-j", "4"});
    const ToolRun json = runTool(words);
    words.erase(words.begin() + 1);
    const ToolRun together = runTool(words);
    EXPECT_EQ(together.out, alone.out);
    EXPECT_EQ(together.err + alone.err, "");
    EXPECT_EQ(together.status, 1);
    EXPECT_EQ(nlohmann::json::parse(json.out).size(), 14U * 4);
    for (const char *jobs : {"0", "-1", "many"}) {
        EXPECT_EQ(runTool({"check", "--jobs", jobs, words.back()}).status, 2);
    }
}

TEST_F(CheckTest, OneFileDoesNotAffectTheNext)
{
    const std::string own = folder_.write("own.vel", "RULES:\n"
                                                     "  OBJECT: PUMP\n"
                                                     "    Required Parameters = Head\n"
                                                     "  END\n"
                                                     "END\n"
                                                     "x = 1\n"
                                                     "PUMP: other\n"
                                                     "  Kind = Screw\n"
                                                     "END\n");
    const std::string one = folder_.write("bad.vel", bad);
    const ToolRun run = runTool({"check", own, one, own, one});
    EXPECT_EQ(run.out, runTool({"check", own}).out + badFindings(one) +
                           runTool({"check", own}).out + badFindings(one));
    EXPECT_NE(run.out.find("/RULES: Rules in command data have no effect"), std::string::npos);
    EXPECT_EQ(run.out.find("required parameter \"Head\""), std::string::npos);
}

TEST_F(CheckTest, AnUnfinishedStatementDoesNotContinueInTheNextFile)
{
    const std::string one = folder_.write("bad.vel", bad);
    for (const std::string rest :
         {"x = 1 \\", "PUMP: c \\\n", "&replace PUMP: a\\", "END\\", "# \\"}) {
        const std::string cut = folder_.write("cut.vel", good + rest);
        const ToolRun run = runTool({"check", cut, one});
        EXPECT_EQ(run.out, badFindings(one)) << rest;
        EXPECT_EQ(run.err, "") << rest;
    }
}

TEST_F(CheckTest, ReportsWrongRulesOnceAndUsesTheOthers)
{
    const OwnRules wrong(std::string(pumpRules).insert(7, "  OBJECT: X\n    Bogus = 1\n  END\n"));
    const std::string one = folder_.write("bad.vel", bad);
    const ToolRun run = runTool({"check", one, one});
    EXPECT_EQ(run.out, badFindings(one) + badFindings(one));
    EXPECT_EQ(run.err, "veltool: " + wrong.path() +
                           ":3: /RULES/OBJECT:X/Bogus: OBJECT has no field \"Bogus\"; "
                           "correct the name or remove the field [bad-rule]\n");
    const ToolRun fine = runTool({"check", folder_.write("good.vel", good)});
    EXPECT_EQ(fine.status, 1) << "the rules have findings";
}

TEST_F(CheckTest, FailsWithoutRules)
{
    setenv("ZOT5_VEL_LIBS", "missing.vel", 1);
    const ToolRun run = runTool({"check", folder_.write("good.vel", good)});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U) << run.err;
}

TEST_F(CheckTest, ShowsProgressOnATerminalOnly)
{
    if (!hasTerminals()) {
        GTEST_SKIP() << "there are no pseudo-terminals here";
    }
    folder_.write("good.vel", good);
    // The first file is a slow pipe, so that the run takes more than a second.
    const std::string start = "cd " + folder_.path() +
                              " && mkfifo slow && { { sleep 1.2; cat good.vel; } > slow & "
                              "trap 'rm slow' EXIT; ";
    const std::string check = "$VELTOOL check slow good.vel good.vel";
    const ToolRun terminal =
        runShell(start + "script -qec \"" + check + "\" /dev/null </dev/null; }");
    EXPECT_EQ(terminal.status, 0) << terminal.err;
    EXPECT_EQ(terminal.out.rfind("\r1 of 3 files", 0), 0U) << terminal.out;
    EXPECT_TRUE(terminal.out.ends_with("\r\x1b[K")) << terminal.out;
    const ToolRun quiet = runShell(start + check + "; }");
    EXPECT_EQ(quiet.out + quiet.err, "");
    EXPECT_EQ(quiet.status, 0);
}

class RulesTest : public ::testing::Test
{
protected:
    TemporaryFolder folder_;
};

const char *const faulty = "RULES:\n"
                           "  OBJECT: VALVE\n"
                           "    Parents = PLANT\n"
                           "    Optinal Parameters = Opening\n"
                           "    PARAMETER: Opening\n"
                           "      Units = parts\n"
                           "    END\n"
                           "  END\n"
                           "  OBJECT: A\n"
                           "    Inherits = OBJECT:B\n"
                           "  END\n"
                           "  OBJECT: B\n"
                           "    Inherits = OBJECT:A\n"
                           "  END\n"
                           "END\n";

TEST_F(RulesTest, CheckListsEachMistakeWithItsLine)
{
    const std::string file = folder_.write("my.vel", faulty);
    const ToolRun run = runTool({"rules", "check", file});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "");
    const std::string path = file;
    EXPECT_EQ(run.out,
              path +
                  ":4: /RULES/OBJECT:VALVE/Optinal Parameters: OBJECT has no field "
                  "\"Optinal Parameters\"; did you mean Optional Parameters? [bad-rule]\n" +
                  path +
                  ":3: /RULES/OBJECT:VALVE/Parents: Unknown object type \"PLANT\"; "
                  "correct the name or add a rule for it [bad-rule]\n" +
                  path +
                  ":6: /RULES/OBJECT:VALVE/PARAMETER:Opening/Units: Unknown unit \"parts\"; "
                  "use a unit such as kg m^-3 [bad-rule]\n" +
                  path +
                  ":13: /RULES/OBJECT:B/Inherits: The rule inherits itself through OBJECT:A; "
                  "inherit another rule [bad-rule]\n");
    const auto array = nlohmann::json::parse(runTool({"rules", "check", "--json", file}).out);
    ASSERT_EQ(array.size(), 4U);
    EXPECT_EQ(array[1]["file"], file);
    EXPECT_EQ(array[1]["line"], 3);
    EXPECT_EQ(array[1]["id"], "bad-rule");
}

TEST_F(RulesTest, CheckReadsLibrariesTogether)
{
    const std::string one =
        folder_.write("one.vel", "RULES:\n OBJECT: A\n  Parents = B\n END\nEND\n");
    const std::string two =
        folder_.write("two.vel", "RULES:\n OBJECT: B\n  Units = m\n END\nEND\n");
    EXPECT_EQ(runTool({"rules", "check", one}).status, 1);
    const ToolRun both = runTool({"rules", "check", one, two});
    EXPECT_EQ(both.out, two + ":3: /RULES/OBJECT:B/Units: OBJECT has no field \"Units\"; "
                              "correct the name or remove the field [bad-rule]\n");
}

TEST_F(RulesTest, CheckUsesTheLibrariesOfTheEnvironment)
{
    EXPECT_EQ(runTool({"rules", "check"}).out, "") << "the shipped libraries have no mistakes";
    EXPECT_EQ(runTool({"rules", "check"}).status, 0);
    const OwnRules own(faulty);
    const ToolRun run = runTool({"rules", "check"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.rfind(own.path() + ":4: /RULES/OBJECT:VALVE/Optinal", 0), 0U) << run.out;
    setenv("ZOT5_VEL_LIBS", "missing.vel", 1);
    EXPECT_EQ(runTool({"rules", "check"}).status, 2);
}

TEST_F(RulesTest, CheckContinuesAfterALibraryThatFails)
{
    const std::string file = folder_.write("my.vel", faulty);
    const std::string broken = folder_.write("broken.vel", "RULES:\nno sense\n");
    const ToolRun run = runTool({"rules", "check", broken, file});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "veltool: " + broken + ":2: parseVELLineH: syntax error near \"no sense\"\n");
    EXPECT_NE(run.out.find("VALVE"), std::string::npos);
    EXPECT_EQ(runTool({"rules", "chek"}).status, 2);
    EXPECT_EQ(runTool({"rules"}).status, 2);
    EXPECT_EQ(runTool({"rules", "check", "--help"}).status, 0);
}

TEST_F(CheckTest, ExplainShowsTheRule)
{
    const std::string file = folder_.write("good.vel", good);
    const ToolRun parameter = runTool({"explain", file, "PUMP:a / Head"});
    EXPECT_EQ(parameter.out, "Type = Real\n"
                             "Units = m\n"
                             "Upper Bound = 100 [m]\n"
                             "Bounds Exclusive = No\n"
                             "Editable = Yes\n"
                             "Editable While Running = No\n"
                             "Expert = No\n"
                             "Expressions = Yes\n"
                             "Presence = optional, by \"Optional Parameters\" of OBJECT:PUMP\n");
    EXPECT_EQ(parameter.status, 0);
    const ToolRun object = runTool({"explain", "-", "/PUMP:a"}, good);
    EXPECT_NE(object.out.find("Parents = /\nRequired Parameters = Kind\n"), std::string::npos)
        << object.out;
    const auto json =
        nlohmann::json::parse(runTool({"explain", "--json", file, "/PUMP:a/Kind"}).out);
    EXPECT_EQ(json["path"], "/PUMP:a/Kind");
    EXPECT_EQ(json["fields"]["Allowed Values"], "Piston, Screw");
    EXPECT_EQ(json["fields"]["Presence"], "required, by \"Required Parameters\" of OBJECT:PUMP");

    const ToolRun none = runTool({"explain", file, "/VALVE:v"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "veltool: " + file + ": /VALVE:v: no rule describes this path\n");
}

} // namespace
} // namespace veltool::test
