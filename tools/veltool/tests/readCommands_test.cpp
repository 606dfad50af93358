// veltool tree, get and find: their output and their exit statuses.
#include "tools/veltool/tests/toolRun.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace veltool::test {
namespace {

const char *const sample = "FLOW:\n"
                           "  DOMAIN: Duct\n"
                           "    Option = Fluid # comment\n"
                           "    Location = B1, \\\n"
                           "      B2\n"
                           "    M\xC3\xBC = M\xC3\x9CHLE\n"
                           "  END\n"
                           "  DOMAIN: Duct\n"
                           "    Option = Solid\n"
                           "  END\n"
                           "END\n";

// The parameter names of a file are ASCII.
std::string sampleText()
{
    std::string text = sample;
    text.replace(text.find("M\xC3\xBC"), 3, "Mill");
    return text;
}

TEST(Tree, ShowsStoredOrder)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", sampleText());
    EXPECT_EQ(runTool({"tree", file}).out, "FLOW:\n"
                                           "  DOMAIN: Duct\n"
                                           "    Option = Solid\n"
                                           "    Location = B1, B2\n"
                                           "    Mill = M\xC3\x9CHLE\n");
    EXPECT_EQ(runTool({"tree", file, "FLOW/DOMAIN : Duct"}).out, "DOMAIN: Duct\n"
                                                                 "  Option = Solid\n"
                                                                 "  Location = B1, B2\n"
                                                                 "  Mill = M\xC3\x9CHLE\n");
    EXPECT_EQ(runTool({"tree", file, "/FLOW/DOMAIN:Duct/Option"}).out, "Option = Solid\n");
}

TEST(Tree, GivesNestedJson)
{
    const TemporaryFolder folder;
    const std::string file =
        folder.write("a.vel", "A:\n x = 1\n B: b\n END\nEND\nC: c\n y =\nEND\n");
    const ToolRun run = runTool({"tree", "--json", file});
    EXPECT_EQ(run.status, 0);
    const auto expected = nlohmann::ordered_json::parse(R"(
        {"path":"/","kind":"Object","type":"/","name":null,"value":null,"children":[
          {"path":"/A","kind":"Singleton","type":"A","name":null,"value":null,"children":[
            {"path":"/A/x","kind":"Param","type":"String","name":"x","value":"1","children":[]},
            {"path":"/A/B:b","kind":"Object","type":"B","name":"b","value":null,"children":[]}]},
          {"path":"/C:c","kind":"Object","type":"C","name":"c","value":null,"children":[
            {"path":"/C:c/y","kind":"Param","type":"String","name":"y","value":"","children":[]}]}]})");
    EXPECT_EQ(nlohmann::ordered_json::parse(run.out), expected);
    EXPECT_EQ(nlohmann::json::parse(runTool({"tree", "--json", file, "/A/B:b"}).out)["path"],
              "/A/B:b");
}

TEST(Tree, GivesTheRootOfAnEmptyFile)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("empty.vel", "");
    EXPECT_EQ(runTool({"tree", file}).out, "");
    EXPECT_EQ(nlohmann::json::parse(runTool({"tree", "--json", file}).out)["children"].size(), 0U);
}

TEST(Tree, ShowsLibraryDataOnlyWhenAsked)
{
    const TemporaryFolder folder;
    folder.write("own.vel", "RULES:\n  OBJECT: A\n  END\nEND\n");
    const std::string file = folder.write("a.vel", "A: a\nEND\n");
    const std::string setting = "ZOT5_VEL_LIBS=own.vel ZOT5_VEL_LIBSDIR=" + folder.path();
    EXPECT_EQ(runShell(setting + " $VELTOOL tree --library " + file).out,
              "RULES:\n  OBJECT: A\nA: a\n");
    EXPECT_EQ(runShell(setting + " $VELTOOL tree " + file).out, "A: a\n");
    const ToolRun missing = runShell(setting + "x $VELTOOL tree --library " + file);
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.out, "");
}

TEST(Tree, GivesBytesForInvalidUtf8)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "x = a\xFF\n");
    const auto tree = nlohmann::json::parse(runTool({"tree", "--json", file}).out);
    EXPECT_EQ(tree["children"][0]["value"], "a\xEF\xBF\xBD");
    EXPECT_EQ(tree["children"][0]["valueBytes"], "61ff");
    EXPECT_EQ(runTool({"tree", file}).out, "x = a\xFF\n");
}

TEST(Get, PrintsTheValue)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", sampleText());
    const ToolRun run = runTool({"get", file, "/FLOW/DOMAIN:Duct/Location"});
    EXPECT_EQ(run.out, "B1, B2\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(runTool({"get", file, "FLOW / DOMAIN : Duct / Option"}).out, "Solid\n");
}

TEST(Get, ReadsStandardInput)
{
    const ToolRun run = runTool({"get", "-", "/x"}, "x = 1");
    EXPECT_EQ(run.out, "1\n");
    EXPECT_EQ(runTool({"tree", "-"}, "x = 1").out, "x = 1\n");
    EXPECT_EQ(runTool({"find", "-", "1"}, "x = 1").out, "-:1: /x = 1\n");
    EXPECT_EQ(runTool({"format", "-"}, "x=1").out, "x = 1\n");
    if (std::filesystem::exists("/dev/stdin")) { // it does not exist in a root without /proc
        EXPECT_EQ(runShell("printf 'x = 1' | $VELTOOL get /dev/stdin /x").out, "1\n") << "a pipe";
    }
}

TEST(Get, ReportsAPathThatIsNotAParameter)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", sampleText());
    const ToolRun missing = runTool({"get", file, "/FLOW/No"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err,
              "veltool: " + file + ": getStringValue: value \"/FLOW/No\" does not exist\n");
    const ToolRun object = runTool({"get", file, "/FLOW"});
    EXPECT_EQ(object.status, 2);
    EXPECT_EQ(object.err,
              "veltool: " + file + ": /FLOW is an object; use veltool tree to show it\n");
}

TEST(Find, SearchesNamesPathsAndValuesWithoutCase)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", sampleText());
    const ToolRun run = runTool({"find", file, "SOLID"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, file + ":9: /FLOW/DOMAIN:Duct/Option = Solid\n");
    EXPECT_EQ(runTool({"find", file, "m\xC3\xBChle"}).out,
              file + ":6: /FLOW/DOMAIN:Duct/Mill = M\xC3\x9CHLE\n");
    EXPECT_EQ(runTool({"find", file, "domain:duct"}).out,
              file + ":8: /FLOW/DOMAIN:Duct\n" + file + ":9: /FLOW/DOMAIN:Duct/Option = Solid\n" +
                  file + ":4: /FLOW/DOMAIN:Duct/Location = B1, B2\n" + file +
                  ":6: /FLOW/DOMAIN:Duct/Mill = M\xC3\x9CHLE\n");
}

TEST(Find, ReturnsOneWithoutAMatch)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", sampleText());
    const ToolRun run = runTool({"find", file, "comment"});
    EXPECT_EQ(run.status, 1) << "a comment is not data";
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(runTool({"find", "--json", file, "comment"}).out, "[]\n");
}

TEST(Find, GivesAJsonArrayOverAllFiles)
{
    const TemporaryFolder folder;
    const std::string one = folder.write("one \xFF.vel", "x = 1\nA:\nEND\n");
    const std::string two = folder.write("two.vel", "\n\ny = \xFF"
                                                    "1\n");
    const ToolRun run = runTool({"find", "--json", one, two, "1"});
    const auto matches = nlohmann::json::parse(run.out);
    ASSERT_EQ(matches.size(), 2U);
    EXPECT_EQ(matches[0]["line"], 1);
    EXPECT_EQ(matches[0]["path"], "/x");
    EXPECT_EQ(matches[0]["value"], "1");
    EXPECT_TRUE(matches[0].contains("fileBytes"));
    EXPECT_EQ(matches[1]["file"], two);
    EXPECT_EQ(matches[1]["line"], 3);
    EXPECT_EQ(matches[1]["valueBytes"], "ff31");
    const auto object = nlohmann::json::parse(runTool({"find", "--json", one, "A"}).out);
    EXPECT_TRUE(object[0]["value"].is_null());
}

TEST(Find, ContinuesAfterAFileThatFails)
{
    const TemporaryFolder folder;
    const std::string good = folder.write("good.vel", "x = 1\n");
    const std::string bad = folder.write("bad.vel", "x = 1\nno sense\n");
    const ToolRun run = runTool({"find", folder.path("missing"), good, bad, good, "x"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, good + ":1: /x = 1\n" + good + ":1: /x = 1\n");
    EXPECT_EQ(run.err, "veltool: " + folder.path("missing") +
                           ": No such file or directory\n"
                           "veltool: " +
                           bad + ":2: parseVELLineH: syntax error near \"no sense\"\n");
}

TEST(Reading, NeedsNoPerl)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "x = 1\n");
    for (const char *words : {"get a.vel /x", "tree a.vel", "find a.vel x", "format a.vel",
                              "format --check a.vel", "diff a.vel a.vel"}) {
        const ToolRun run =
            runShell("cd " + folder.path() + " && ZOT5_VEL_PARSER=/nowhere $VELTOOL " + words);
        EXPECT_EQ(run.status, 0) << words << run.err;
    }
}

TEST(FileNames, MayContainAnyCharacter)
{
    const TemporaryFolder folder;
    for (const char *name : {"a b.vel", "it's \"so\".vel", "-x.vel", "--help", "[a,b]", "a=b;$c",
                             "\xFF.vel", "new\nline"}) {
        folder.write(name, "x = 1\n");
        EXPECT_EQ(runTool({"get", folder.path(name), "/x"}).out, "1\n") << name;
        ASSERT_EQ(chdir(folder.path().c_str()), 0);
        EXPECT_EQ(runTool({"get", "--", name, "/x"}).out, "1\n") << name;
        EXPECT_EQ(runTool({"find", "--", name, "x"}).out, name + std::string(":1: /x = 1\n"));
    }
    ASSERT_EQ(chdir("/"), 0);
}

TEST(Get, PrintsTheValueOfManyFiles)
{
    const TemporaryFolder folder;
    const std::string one = folder.write("one.vel", "x = 1\n");
    const std::string two = folder.write("two.vel", "x = \xFF\n");
    const ToolRun run = runTool({"get", one, folder.path("missing"), two, "x"});
    EXPECT_EQ(run.out, one + ": 1\n" + two + ": \xFF\n");
    EXPECT_EQ(run.err, "veltool: " + folder.path("missing") + ": No such file or directory\n");
    EXPECT_EQ(run.status, 2);
    const auto array = nlohmann::json::parse(runTool({"get", "--json", one, two, "x"}).out);
    ASSERT_EQ(array.size(), 2U);
    EXPECT_EQ(array[0], (nlohmann::json{{"file", one}, {"path", "/x"}, {"value", "1"}}));
    EXPECT_EQ(array[1]["valueBytes"], "ff");
}

/// The paths that a search finds, separated by spaces.
std::string found(const std::string &file, const std::string &text)
{
    std::string paths;
    for (const auto &match :
         nlohmann::json::parse(runTool({"find", "--json", file, "--", text}).out)) {
        paths += match["path"].get<std::string>() + ' ';
    }
    return paths;
}

TEST(Find, AcceptsWildcards)
{
    const TemporaryFolder folder;
    const std::string file =
        folder.write("a.vel", "Pressure = 2 * p\nSpeed = 2 p\nMass = M\xC3\xBChle ?\n");
    EXPECT_EQ(found(file, "p*re"), "/Pressure ");
    EXPECT_EQ(found(file, "2*P"), "/Pressure /Speed ");
    EXPECT_EQ(found(file, "2 * p"), "/Pressure ") << "blanks around the star";
    EXPECT_EQ(found(file, "s?eed"), "/Speed ");
    EXPECT_EQ(found(file, "M?HLE ?"), "/Mass ") << "one character of two bytes";
    EXPECT_EQ(found(file, "*"), "/Pressure /Speed /Mass ");
    EXPECT_EQ(found(file, "s??d"), "");
}

TEST(Find, AcceptsNameAndValue)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "Kind = Fluid\nOther Kind = Fluid\n"
                                                   "A:\n  Kind = Fluid Film\nEND\nNote = Kind=x\n");
    EXPECT_EQ(found(file, "kind=fluid"), "/Kind ");
    EXPECT_EQ(found(file, "Kind = Fluid*"), "/Kind /A/Kind ");
    EXPECT_EQ(found(file, "*kind=fluid"), "/Kind /Other Kind ");
    EXPECT_EQ(found(file, "Kind="), "/Note ") << "the text itself";
    EXPECT_EQ(found(file, "=Fluid"), "");
    EXPECT_EQ(found(file, "*=*film"), "/A/Kind ");
}

} // namespace
} // namespace veltool::test
