// veltool set, add, delete and perl: changes of a file, refusals, and scripts.
#include "tools/veltool/tests/ownRules.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltool::test {
namespace {

using Words = std::vector<std::string>;

/// A folder and a rule library that the runs use.
class SetTest : public ::testing::Test
{
protected:
    std::string writeSample() { return folder_.write("a.vel", sample_); }

    ToolRun set(const std::string &path, const std::string &value)
    {
        return runTool({"set", folder_.path("a.vel"), path, value});
    }

    const std::string sample_ = "# My case\r\n"
                                "\r\n"
                                "DOMAIN: d\r\n"
                                "  Number = 1   # of them\r\n"
                                "  Kind = Fluid\r\n"
                                "  Location = B1, \\\r\n"
                                "     B2\r\n"
                                "  Number = 2   # in truth\r\n"
                                "END";
    OwnRules rules_{"RULES:\n"
                    "  OBJECT: DOMAIN\n"
                    "    Parents = /\n"
                    "    Required Parameters = Kind\n"
                    "    Optional Parameters = Number, Location, Note\n"
                    "    PARAMETER: Kind\n"
                    "      Allowed Values = Fluid, Solid\n"
                    "    END\n"
                    "  END\n"
                    "END\n"};
    TemporaryFolder folder_;
};

TEST_F(SetTest, ChangesTheLastStatementAndNothingElse)
{
    const std::string file = writeSample();
    ASSERT_EQ(chmod(file.c_str(), 0604), 0);
    const ToolRun run = set("/DOMAIN:d/Number", "-7");
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
    std::string expected = sample_;
    expected.replace(expected.find("= 2 "), 4, "= -7 ");
    EXPECT_EQ(folder_.read("a.vel"), expected);
    EXPECT_EQ(folder_.read("a.vel.bak"), sample_);
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"a.vel", "a.vel.bak"}));
    struct stat status;
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0604U);
}

TEST_F(SetTest, WrapsAWrappedValueAgain)
{
    writeSample();
    EXPECT_EQ(set("DOMAIN:d/Location", "B1, B2, Third").status, 0);
    std::string expected = sample_;
    expected.replace(expected.find("     B2\r\n"), 9, "     B2, Third\r\n");
    EXPECT_EQ(folder_.read("a.vel"), expected);
}

TEST_F(SetTest, DoesNotChangeAnUnfinishedLastLine)
{
    const std::string file = folder_.write("a.vel", "DOMAIN: d\n  Kind = Fluid\nEND\nx = 1 \\");
    const ToolRun run = set("/DOMAIN:d/Kind", "Solid");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(folder_.read("a.vel"), "DOMAIN: d\n  Kind = Solid\nEND\nx = 1 \\");
}

TEST_F(SetTest, DoesNotWriteTheSameValue)
{
    writeSample();
    EXPECT_EQ(set("/DOMAIN:d/Location", "B1, B2").status, 0);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});
}

TEST_F(SetTest, IsRefusedWhenTheRulesFindSomethingNew)
{
    const std::string file = writeSample();
    const ToolRun run = set("/DOMAIN:d/Kind", "Gas");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "veltool: " + file +
                  ": not written because of new findings; use --force to write it anyway\n");
    EXPECT_EQ(run.out.rfind(file + ":5: /DOMAIN:d/Kind: ", 0), 0U) << run.out;
    EXPECT_NE(run.out.find("[not-allowed]\n"), std::string::npos) << run.out;
    EXPECT_EQ(folder_.read("a.vel"), sample_);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});

    const ToolRun forced = runTool({"set", "--force", file, "/DOMAIN:d/Kind", "Gas"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(runTool({"get", file, "/DOMAIN:d/Kind"}).out, "Gas\n");
}

TEST_F(SetTest, OldFindingsDoNotMatter)
{
    const std::string file =
        folder_.write("a.vel", "DOMAIN: d\n  Kind = Gas\n  No = 1\n  Note = x\nEND\n");
    EXPECT_EQ(set("/DOMAIN:d/Note", "y").status, 0);
    EXPECT_EQ(set("/DOMAIN:d/Kind", "Solid").status, 0);
    EXPECT_EQ(folder_.read("a.vel"), "DOMAIN: d\n  Kind = Solid\n  No = 1\n  Note = y\nEND\n");
}

TEST_F(SetTest, RefusesPathsThatTheDatabaseRefuses)
{
    const std::string file = writeSample();
    const ToolRun missing = set("/DOMAIN:d/No", "1");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err,
              "veltool: " + file +
                  ": /DOMAIN:d/No: setStringValue: requested object does not exist; nothing was "
                  "written; use veltool add for a new parameter; veltool tree lists the existing "
                  "paths\n");
    const ToolRun object = set("/DOMAIN:d", "1");
    EXPECT_EQ(object.status, 1);
    EXPECT_EQ(object.err,
              "veltool: " + file +
                  ": /DOMAIN:d: setStringValue: requested object is not a parameter; nothing was "
                  "written; PATH must be a parameter\n");
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});
}

TEST_F(SetTest, RefusesValuesThatAFileCannotContain)
{
    writeSample();
    for (const char *value : {"a # b", "#", "a\\", "a\nb", "a\tb", " a", "a  b"}) {
        const ToolRun run = set("/DOMAIN:d/Note", value);
        EXPECT_EQ(run.status, 1) << value;
        EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U) << run.err;
    }
    EXPECT_EQ(folder_.read("a.vel"), sample_);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});
}

// A program can give a parameter the value "a#b", but a line would end at the '#'.
TEST_F(SetTest, RefusesAValueWithAHashWithoutABackslash)
{
    const std::string file = writeSample();
    for (const Words &words : {Words{"set", file, "/DOMAIN:d/Number", "a#b"},
                               Words{"add", file, "/DOMAIN:d/Note", "a#b"}}) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("value \"a#b\" cannot be stored in a file"), std::string::npos)
            << run.err;
    }
    EXPECT_EQ(folder_.read("a.vel"), sample_);
}

TEST_F(SetTest, KeepsAByteOrderMark)
{
    const std::string mark = "\xEF\xBB\xBF";
    const std::string file = folder_.write("a.vel", mark + "DOMAIN: d\n  Kind = Fluid\nEND\n");
    EXPECT_EQ(set("/DOMAIN:d/Kind", "Solid").status, 0);
    EXPECT_EQ(folder_.read("a.vel"), mark + "DOMAIN: d\n  Kind = Solid\nEND\n");
    EXPECT_EQ(runTool({"add", file, "/DOMAIN:d/Note", "x"}).status, 0);
    EXPECT_EQ(runTool({"delete", file, "/DOMAIN:d"}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), mark);
    EXPECT_EQ(runTool({"add", "--force", file, "/top", "1"}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), mark + "top = 1\n");
}

TEST_F(SetTest, PointsToExtractForAContainer)
{
    const std::string file = folder_.write("a.res", "*INFO\n                   0\n*ENDINFO\n");
    const ToolRun run = runTool({"set", file, "/x", "1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "veltool: " + file +
                           ": is a def or res file; nothing was written; write its command data "
                           "to a file with veltool extract, edit that file, and put it back with "
                           "veltool embed\n");
}

TEST_F(SetTest, FollowsALinkAndReplacesAnOldBackup)
{
    writeSample();
    folder_.write("link.bak", "older\n");
    ASSERT_EQ(symlink("a.vel", folder_.path("link").c_str()), 0);
    EXPECT_EQ(runTool({"set", folder_.path("link"), "/DOMAIN:d/Number", "3"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("link")));
    EXPECT_NE(folder_.read("a.vel"), sample_);
    EXPECT_EQ(folder_.read("link.bak"), sample_);
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"a.vel", "link", "link.bak"}));
}

TEST_F(SetTest, KeepsABackupThatIsAnotherNameOfTheFile)
{
    const std::string file = writeSample();
    ASSERT_EQ(link(file.c_str(), (file + ".bak").c_str()), 0);
    EXPECT_EQ(set("/DOMAIN:d/Number", "3").status, 0);
    EXPECT_EQ(folder_.read("a.vel.bak"), sample_);
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"a.vel", "a.vel.bak"}));
}

TEST_F(SetTest, WritesNothingWithoutRules)
{
    const std::string file = writeSample();
    setenv("ZOT5_VEL_LIBS", "missing.vel", 1);
    const ToolRun run = set("/DOMAIN:d/Number", "3");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U) << run.err;
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});
}

TEST_F(SetTest, FindsTheRulesThatShipWithIt)
{
    unsetenv("ZOT5_VEL_LIBSDIR");
    unsetenv("ZOT5_VEL_LIBS");
    const std::string script = folder_.write(
        "places.pl", "print join ',', @ENV{qw(ZOT5_VEL_PARSER ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS)};\n");
    const ToolRun run = runShell("unset ZOT5_VEL_PARSER; $VELTOOL perl -- '" + script + "'");
    const std::string build = std::getenv("VEL_BUILD_DIR");
    EXPECT_EQ(run.out.rfind(build + "/perl," + build + "/libraries,rules.vel", 0), 0U)
        << run.out << run.err;
}

TEST_F(SetTest, GivesNewFindingsAsJson)
{
    const std::string file = writeSample();
    const ToolRun run = runTool({"set", "--json", file, "/DOMAIN:d/Kind", "Gas"});
    EXPECT_EQ(run.status, 1);
    const auto array = nlohmann::json::parse(run.out);
    ASSERT_EQ(array.size(), 1U);
    EXPECT_EQ(array[0]["file"], file);
    EXPECT_EQ(array[0]["line"], 5);
    EXPECT_EQ(array[0]["path"], "/DOMAIN:d/Kind");
    EXPECT_EQ(array[0]["id"], "not-allowed");
    EXPECT_EQ(runTool({"set", "--json", file, "/DOMAIN:d/Number", "2"}).out, "[]\n");
    EXPECT_EQ(runTool({"set", "--json", file, "/DOMAIN:d/Number", "3"}).out, "[]\n");
}

TEST_F(SetTest, AddWritesOneLineAfterTheLastParameter)
{
    const std::string file = writeSample();
    const ToolRun run = runTool({"add", file, "DOMAIN:d / Note", "-1 = \xFF"});
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
    std::string expected = sample_;
    expected.insert(expected.find("END"), "  Note = -1 = \xFF\r\n");
    EXPECT_EQ(folder_.read("a.vel"), expected);
    EXPECT_EQ(folder_.read("a.vel.bak"), sample_);
}

TEST_F(SetTest, AddIsRefused)
{
    const std::string file = writeSample();
    const std::string start = "veltool: " + file + ": ";
    const auto refusal = [&](const std::string &path, const std::string &value) {
        const ToolRun run = runTool({"add", file, path, value});
        EXPECT_EQ(run.status, 1) << path;
        return run.out + run.err;
    };
    EXPECT_EQ(refusal("/DOMAIN:d/Kind", "Solid"),
              start + "/DOMAIN:d/Kind: already exists; nothing was written; use veltool set to "
                      "change its value\n");
    EXPECT_EQ(refusal("/DOMAIN:d", "1"),
              start + "/DOMAIN:d: already exists; nothing was written\n");
    EXPECT_EQ(refusal("/DOMAIN:e/Kind", "Solid"),
              start + "/DOMAIN:e/Kind: velCreateParam: parent object does not exist; nothing was "
                      "written; PATH must be a new parameter in an existing object\n");
    EXPECT_EQ(refusal("/DOMAIN:d/1 No Name", "1").rfind(start, 0), 0U);
    EXPECT_EQ(refusal("/DOMAIN:d/Note", "a # b"),
              start + "/DOMAIN:d/Note: value \"a # b\" cannot be stored in a file: '#' begins a "
                      "comment; write \\#; nothing was written\n");
    EXPECT_EQ(refusal("/DOMAIN:d/Nte", "1"),
              file +
                  ":9: /DOMAIN:d/Nte: DOMAIN has no parameter \"Nte\"; did you mean Note? "
                  "[unknown-parameter]\n" +
                  start + "not written because of new findings; use --force to write it anyway\n");
    EXPECT_EQ(folder_.read("a.vel"), sample_);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});

    EXPECT_EQ(runTool({"add", "--force", file, "/DOMAIN:d/Nte", "1"}).status, 0);
    EXPECT_EQ(runTool({"get", file, "/DOMAIN:d/Nte"}).out, "1\n");
}

TEST_F(SetTest, DeleteRemovesAllStatements)
{
    const std::string file = writeSample();
    EXPECT_EQ(runTool({"delete", file, "/DOMAIN:d/Number"}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), "# My case\r\n\r\nDOMAIN: d\r\n  Kind = Fluid\r\n"
                                     "  Location = B1, \\\r\n     B2\r\nEND");
    EXPECT_EQ(folder_.read("a.vel.bak"), sample_);
}

TEST_F(SetTest, DeleteRemovesAllBlocksOfAnObject)
{
    const std::string block = "DOMAIN: e # first\n  Kind = Fluid\n  # note\nEND\n";
    const std::string rest = "# before\nDOMAIN: d\n  Kind = Fluid\nEND\n# after\n";
    const std::string file =
        folder_.write("a.vel", block + rest + "&replace DOMAIN: e\n  Kind = Solid\nEND # of e");
    EXPECT_EQ(runTool({"delete", file, "/DOMAIN:e"}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), rest);
}

TEST_F(SetTest, DeleteIsRefused)
{
    const std::string file = writeSample();
    const ToolRun required = runTool({"delete", file, "/DOMAIN:d/Kind"});
    EXPECT_EQ(required.status, 1);
    EXPECT_EQ(required.out,
              file + ":3: /DOMAIN:d: required parameter \"Kind\" is missing [missing-parameter]\n");
    const ToolRun missing = runTool({"delete", file, "/DOMAIN:d/Note"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err.rfind("veltool: " + file + ": /DOMAIN:d/Note: ", 0), 0U) << missing.err;
    EXPECT_NE(missing.err.find("; nothing was written; "), std::string::npos) << missing.err;
    const ToolRun root = runTool({"delete", file, "/"});
    EXPECT_EQ(root.status, 1);
    EXPECT_EQ(root.err,
              "veltool: " + file + ": /: the root cannot be deleted; nothing was written\n");
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vel"});
    EXPECT_EQ(runTool({"delete", "--force", file, "/DOMAIN:d/Kind"}).status, 0);
    EXPECT_EQ(runTool({"find", file, "Kind=*"}).status, 1);
}

// The finding is about /PUMP:c before and after, but refers to another first pump.
TEST_F(SetTest, AFindingWithOtherRelatedPathsIsNotNew)
{
    const OwnRules one("RULES:\n  OBJECT: PUMP\n    Maximum Count = 1\n  END\nEND\n");
    const std::string file = folder_.write("p.vel", "PUMP: a\nEND\nPUMP: b\nEND\nPUMP: c\nEND\n");
    const ToolRun run = runTool({"delete", file, "/PUMP:a"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST_F(SetTest, AddAndDeleteUndoEachOther)
{
    const std::string file = writeSample();
    ASSERT_EQ(runTool({"add", file, "/DOMAIN:d/Note", "x"}).status, 0);
    ASSERT_EQ(runTool({"delete", file, "/DOMAIN:d/Note"}).status, 0);
    EXPECT_EQ(folder_.read("a.vel"), sample_);
}

TEST_F(SetTest, EditsPointToExtractForAContainer)
{
    const std::string file = folder_.write("a.res", "*INFO\n                   0\n*ENDINFO\n");
    for (const Words &words : {Words{"add", file, "/x", "1"}, Words{"delete", file, "/x"}}) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("veltool extract"), std::string::npos) << run.err;
    }
}

TEST(Perl, RunsAScriptWithItsOwnOptions)
{
    const TemporaryFolder folder;
    const std::string script =
        folder.write("a script.pl", "print join('|', @ARGV), \"\\n\"; exit(@ARGV ? 3 : 0);\n");
    const ToolRun run = runTool({"perl", script, "--json", "-5", "--", "a b", "--help"});
    EXPECT_EQ(run.out, "--json|-5|--|a b|--help\n");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(runTool({"perl", script}).status, 0);
}

TEST(Perl, UsesTheDatabase)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "x = 1\n");
    const std::string script = folder.write("get.pl", "use strict; use warnings;\n"
                                                      "my $vel = VEL::Parser::Lite::NEW();\n"
                                                      "my $said = $vel->loadVELFile($ARGV[0]);\n"
                                                      "die $said if $said;\n"
                                                      "$vel->getStringValue('/x', \\my $value);\n"
                                                      "print \"$value\\n\";\n");
    EXPECT_EQ(runTool({"perl", script, file}).out, "1\n");
    const ToolRun failed = runTool({"perl", script, folder.path("missing")});
    EXPECT_EQ(failed.status, 2);
    EXPECT_EQ(failed.out, "");
    EXPECT_EQ(failed.err.rfind("veltool: loadFileData: ", 0), 0U) << failed.err;
}

TEST(Perl, DyingIsAFailure)
{
    const TemporaryFolder folder;
    const ToolRun died = runTool({"perl", folder.write("die.pl", "die \"no more\\n\";\n")});
    EXPECT_EQ(died.status, 2);
    EXPECT_EQ(died.err, "veltool: no more\n");
    EXPECT_EQ(runTool({"perl", folder.write("wrong.pl", "sub {\n")}).status, 2);
    EXPECT_EQ(runTool({"perl", folder.path("missing.pl")}).status, 2);
    EXPECT_EQ(runTool({"perl", folder.path()}).status, 2);
    EXPECT_EQ(runTool({"perl"}).status, 2);
}

TEST(Perl, ReportsAShortWrite)
{
    const TemporaryFolder folder;
    const std::string script = folder.write("print.pl", "print \"text\\n\";\n");
    EXPECT_EQ(runShell("$VELTOOL perl " + script + " > /dev/full").status, 2);
}

TEST(Perl, ReportsMissingPerlPackages)
{
    const TemporaryFolder folder;
    const std::string script = folder.write("print.pl", "print 1;\n");
    const ToolRun run = runShell("ZOT5_VEL_PARSER=" + folder.path() + " $VELTOOL perl " + script);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("veltool: Error: Cannot parse perl code\n"), std::string::npos)
        << run.err;
}

} // namespace
} // namespace veltool::test
