// veltool diff: its output and its exit statuses.
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace veltool::test {
namespace {

const std::string before = "# A case\n"
                           "FLOW:\n"
                           "  Title = My case\n"
                           "  DOMAIN: Duct\n"
                           "    Kind = Fluid\n"
                           "    Location = B1, \\\n"
                           "      B2\n"
                           "    WALL: w\n"
                           "      Roughness = 1\n"
                           "    END\n"
                           "  END\n"
                           "END\n";

class DiffTest : public ::testing::Test
{
protected:
    ToolRun diff(const std::string &a, const std::string &b)
    {
        return runTool({"diff", folder_.write("a.vel", a), folder_.write("b.vel", b)});
    }

    TemporaryFolder folder_;
};

TEST_F(DiffTest, OrderWrappingAndCommentsAreNotADifference)
{
    const ToolRun run = diff(before, "FLOW:\r\n"
                                     "DOMAIN: Duct\r\n"
                                     "WALL: w\r\n"
                                     "  Roughness = 0\r\n"
                                     "  Roughness = 1\r\n"
                                     "END\r\n"
                                     "Location = B1, B2 # both\r\n"
                                     "END\r\n"
                                     "Title   =   My   case\r\n"
                                     "END\r\n"
                                     "FLOW:\r\n"
                                     "DOMAIN: Duct\r\n"
                                     "Kind = Fluid\r\n"
                                     "END\r\n"
                                     "END");
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
}

const std::string after = "FLOW:\n"
                          "  DOMAIN: Duct\n"
                          "    Kind = Solid\n"
                          "    Location = B1, B2\n"
                          "    Empty =\n"
                          "  END\n"
                          "  PROBE:\n"
                          "    At = (1, 2)\n"
                          "  END\n"
                          "  Title = My case\n"
                          "END\n";

TEST_F(DiffTest, ListsEveryObjectAndParameter)
{
    const ToolRun run = diff(before, after);
    EXPECT_EQ(run.out, "~ /FLOW/DOMAIN:Duct/Kind = Fluid -> Solid\n"
                       "- /FLOW/DOMAIN:Duct/WALL:w\n"
                       "- /FLOW/DOMAIN:Duct/WALL:w/Roughness = 1\n"
                       "+ /FLOW/DOMAIN:Duct/Empty = \n"
                       "+ /FLOW/PROBE\n"
                       "+ /FLOW/PROBE/At = (1, 2)\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 1);
}

TEST_F(DiffTest, PrintsJson)
{
    const ToolRun run =
        runTool({"diff", "--json", folder_.write("a.vel", before), folder_.write("b.vel", after)});
    EXPECT_EQ(run.out, R"json([
{"path":"/FLOW/DOMAIN:Duct/Kind","kind":"changed","old":"Fluid","new":"Solid"},
{"path":"/FLOW/DOMAIN:Duct/WALL:w","kind":"removed","old":null,"new":null},
{"path":"/FLOW/DOMAIN:Duct/WALL:w/Roughness","kind":"removed","old":"1","new":null},
{"path":"/FLOW/DOMAIN:Duct/Empty","kind":"added","old":null,"new":""},
{"path":"/FLOW/PROBE","kind":"added","old":null,"new":null},
{"path":"/FLOW/PROBE/At","kind":"added","old":null,"new":"(1, 2)"}
]
)json");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(nlohmann::json::parse(run.out).size(), 6U);
    const ToolRun same = runTool({"diff", "--json", folder_.path("a.vel"), folder_.path("a.vel")});
    EXPECT_EQ(same.out, "[]\n");
    EXPECT_EQ(same.status, 0);
}

TEST_F(DiffTest, JsonOfBytesThatAreNotUtf8)
{
    const ToolRun run = runTool({"diff", "--json", folder_.write("a.vel", "x = \xFF\n"),
                                 folder_.write("b.vel", "x = 1\n")});
    EXPECT_EQ(run.out, "[\n{\"path\":\"/x\",\"kind\":\"changed\",\"old\":\"\xEF\xBF\xBD\","
                       "\"oldBytes\":\"ff\",\"new\":\"1\"}\n]\n");
}

TEST_F(DiffTest, AParameterAndASingletonOfTheSameNameDiffer)
{
    EXPECT_EQ(diff("X = 1\ny = 1\n", "X:\nz = 1\nEND\ny = 1\n").out,
              "- /X = 1\n+ /X\n+ /X/z = 1\n");
}

TEST_F(DiffTest, TheSameNameWithAnotherTypeIsAnotherObject)
{
    EXPECT_EQ(diff("A: x\nEND\n", "B: x\nEND\n").out, "- /A:x\n+ /B:x\n");
    EXPECT_EQ(diff("A: x\nEND\n", "A:\nEND\n").out, "- /A:x\n+ /A\n");
}

TEST_F(DiffTest, FindsManySiblingsInAnyOrder)
{
    std::string forward;
    std::string backward;
    for (int i = 0; i < 3000; ++i) {
        const std::string line = "p" + std::to_string(i) + " = 1\n";
        forward += line;
        backward.insert(0, line);
    }
    EXPECT_EQ(diff(forward, backward).status, 0);
    EXPECT_EQ(diff(forward + "last = 1\n", "first = 1\n" + backward).out,
              "- /last = 1\n+ /first = 1\n");
}

TEST_F(DiffTest, DeepNestingIsCompared)
{
    std::string open;
    std::string close;
    for (int i = 0; i < 20000; ++i) {
        open += "A: b\n";
        close += "END\n";
    }
    const ToolRun run = diff(open + "x = 1\n" + close, open + "x = 2\n" + close);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.substr(0, 7), "~ /A:b/");
    EXPECT_TRUE(run.out.ends_with("/A:b/x = 1 -> 2\n")) << run.err;
}

TEST_F(DiffTest, StandardInputForOneSide)
{
    const std::string file = folder_.write("a.vel", "x = 1\n");
    EXPECT_EQ(runTool({"diff", "-", file}, "x = 2\n").out, "~ /x = 2 -> 1\n");
    EXPECT_EQ(runTool({"diff", file, "-"}, "x = 2\n").out, "~ /x = 1 -> 2\n");
    const ToolRun both = runTool({"diff", "-", "-"}, "x = 2\n");
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(both.err, "veltool: only one file can be standard input (-); name the others\n");
}

TEST_F(DiffTest, ComparesContainersWithTexts)
{
    const std::string text = folder_.write("a.vel", before);
    const std::string container = folder_.path("a.def");
    ASSERT_EQ(runShell("echo 3 | $VELTOOL ds write " + container + " Zones EVERY 0 INTR").status,
              0);
    ASSERT_EQ(runTool({"embed", text, container}).status, 0);
    EXPECT_EQ(runTool({"diff", text, container}).status, 0);
    EXPECT_EQ(runTool({"diff", container, container}).status, 0);
    const ToolRun run =
        runShell("sed s/Fluid/Solid/ " + text + " | $VELTOOL diff " + container + " -");
    EXPECT_EQ(run.out, "~ /FLOW/DOMAIN:Duct/Kind = Fluid -> Solid\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(DiffTest, ReportsEveryFileThatCannotBeRead)
{
    const std::string good = folder_.write("good.vel", "x = 1\n");
    const std::string wrong = folder_.write("wrong.vel", "x = 1\nFLOW:\n");
    const std::string missing = folder_.path("missing.vel");
    const ToolRun both = runTool({"diff", wrong, missing});
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(both.out, "");
    EXPECT_EQ(both.err, "veltool: " + wrong +
                            ":2: 1 missing END statement(s) in input\n"
                            "veltool: " +
                            missing + ": No such file or directory\n");
    EXPECT_EQ(runTool({"diff", good, folder_.path()}).status, 2);
    EXPECT_EQ(runTool({"diff", folder_.path(), good}).status, 2);
    EXPECT_EQ(runTool({"diff", good, folder_.write("cut.def", "*INFO\n")}).status, 2);
}

TEST_F(DiffTest, SurvivesTruncationAndDamage)
{
    const std::string text = folder_.write("a.vel", before);
    const std::string container = folder_.path("a.def");
    ASSERT_EQ(runShell("echo 3 | $VELTOOL ds write " + container + " Zones EVERY 0 INTR").status,
              0);
    ASSERT_EQ(runTool({"embed", text, container}).status, 0);
    for (const std::string &whole : {before, folder_.read("a.def")}) {
        for (std::size_t i = 0; i < whole.size(); i += whole.size() / 25 + 1) {
            std::string damaged = whole.substr(0, i);
            EXPECT_LE(runTool({"diff", text, folder_.write("b", damaged)}).status, 2) << i;
            damaged = whole;
            damaged[i] = static_cast<char>(damaged[i] ^ 0x44);
            EXPECT_LE(runTool({"diff", text, folder_.write("b", damaged)}).status, 2) << i;
        }
    }
}

TEST_F(DiffTest, ReportsUsageErrors)
{
    const std::string file = folder_.write("a.vel", "x = 1\n");
    for (const std::vector<std::string> &words : {std::vector<std::string>{"diff"},
                                                  {"diff", file},
                                                  {"diff", file, file, file},
                                                  {"diff", "--no", file, file}}) {
        EXPECT_EQ(runTool(words).status, 2);
    }
}

TEST_F(DiffTest, AShortWriteIsAFailure)
{
    const std::string a = folder_.write("a.vel", "x = 1\n");
    const std::string b = folder_.write("b.vel", "x = 2\n");
    EXPECT_EQ(runShell("$VELTOOL diff " + a + ' ' + b + " > /dev/full").status, 2);
}

TEST_F(DiffTest, NeedsNoPerl)
{
    const std::string a = folder_.write("a.vel", "x = 1\n");
    EXPECT_EQ(
        runShell("ZOT5_VEL_PARSER=/nowhere ZOT5_VEL_LIBS=none $VELTOOL diff " + a + ' ' + a).status,
        0);
}

} // namespace
} // namespace veltool::test
