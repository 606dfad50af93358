// veltool format: its output, --check, writing files, and refusals.
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace veltool::test {
namespace {

const char *const rough = "A:\r\n"
                          "B: b\r\n"
                          "END # comment\r\n"
                          "x=one two three four\r\n"
                          "END\r\n";

const char *const formatted = "A:\n"
                              "  x = one two three four\n"
                              "  B: b\n"
                              "  END\n"
                              "END\n";

TEST(Format, PrintsTheFormattedText)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", rough);
    const ToolRun run = runTool({"format", file});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, formatted);
    EXPECT_EQ(folder.read("a.vel"), rough);
}

TEST(Format, OrdersObjectsByTheRules)
{
    const TemporaryFolder folder;
    folder.write("own.vel", "RULES:\n"
                            "  OBJECT: Z\n"
                            "    Output Ordering Priority = 1\n"
                            "  END\n"
                            "END\n");
    const std::string file = folder.write("a.vel", "A: a\nEND\nZ: z\nEND\n");
    const std::string setting = "ZOT5_VEL_LIBS=own.vel ZOT5_VEL_LIBSDIR=" + folder.path();
    EXPECT_EQ(runShell(setting + " $VELTOOL format " + file).out, "Z: z\nEND\nA: a\nEND\n");
    EXPECT_EQ(runShell(setting + "x $VELTOOL format " + file).status, 2);
}

TEST(Format, WritesNothingThatOnlyALibraryStates)
{
    const TemporaryFolder folder;
    folder.write("own.vel", "RULES:\n"
                            "  OBJECT: Z\n"
                            "    Output Ordering Priority = 1\n"
                            "    PARAMETER: Kind\n"
                            "      Type = Integer\n"
                            "    END\n"
                            "  END\n"
                            "END\n"
                            "STOCK:\n"
                            "  Water = 1\n"
                            "  Air = 2\n"
                            "END\n");
    const std::string text = "RULES:\n"
                             "  OBJECT: Z\n"
                             "    Parents = /\n"
                             "    PARAMETER: Kind\n"
                             "    END\n"
                             "  END\n"
                             "END\n"
                             "STOCK:\n"
                             "  Air = 2\n"
                             "  Oil = 3\n"
                             "END\n";
    const std::string file = folder.write("a.vel", text);
    const std::string setting = "ZOT5_VEL_LIBS=own.vel ZOT5_VEL_LIBSDIR=" + folder.path();
    EXPECT_EQ(runShell(setting + " $VELTOOL format " + file).out, text);
    EXPECT_EQ(runShell(setting + " $VELTOOL format - < " + file).out, text);
    EXPECT_EQ(runShell(setting + " $VELTOOL format --check " + file).status, 0);
}

// A block below /RULES in a file is normal data and does not change the order.
TEST(Format, TakesTheOrderFromTheLibrariesOnly)
{
    const TemporaryFolder folder;
    folder.write("own.vel", "RULES:\n"
                            "  OBJECT: Z\n"
                            "    Output Ordering Priority = 1\n"
                            "  END\n"
                            "END\n"
                            "LIBRARY:\n"
                            "  EXPRESSIONS:\n"
                            "    shipped = 1\n"
                            "  END\n"
                            "END\n");
    const std::string file =
        folder.write("a.vel", "A: a\nEND\nZ: z\nEND\n"
                              "LIBRARY:\n  EXPRESSIONS:\n    own = 2\n  END\n"
                              "END\n"
                              "RULES:\n  OBJECT: A\n"
                              "    Output Ordering Priority = 5\n  END\nEND\n");
    const std::string expected = "Z: z\nEND\nA: a\nEND\n"
                                 "LIBRARY:\n  EXPRESSIONS:\n    own = 2\n  END\nEND\n"
                                 "RULES:\n  OBJECT: A\n    Output Ordering Priority = 5\n  END\n"
                                 "END\n";
    const std::string setting = "ZOT5_VEL_LIBS=own.vel ZOT5_VEL_LIBSDIR=" + folder.path();
    EXPECT_EQ(runShell(setting + " $VELTOOL format " + file).out, expected);
    EXPECT_EQ(runShell(setting + " $VELTOOL format --in-place " + file).status, 0);
    EXPECT_EQ(folder.read("a.vel"), expected);
}

TEST(Format, RemovesAByteOrderMark)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "\xEF\xBB\xBFx = 1\n");
    EXPECT_EQ(runTool({"format", file}).out, "x = 1\n");
    EXPECT_EQ(runTool({"format", "--check", file}).status, 1);
    EXPECT_EQ(runTool({"get", file, "/x"}).out, "1\n");
    EXPECT_EQ(runTool({"diff", file, folder.write("b.vel", "x = 1\n")}).status, 0);
}

TEST(Format, WrapsToTheWidth)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "x = one two three four\n");
    EXPECT_EQ(runTool({"format", "--width", "12", file}).out,
              "x = one \\\n  two \\\n  three four\n");
    EXPECT_EQ(runTool({"format", "--width=12", file}).out,
              runTool({"format", "--width", "12", file}).out);
    const std::string wide = folder.write("wide.vel", "x = " + std::string(300, 'v') + "\n");
    EXPECT_EQ(runTool({"format", "--width", "0", wide}).out, folder.read("wide.vel"));
}

TEST(Format, RefusesInvalidWidths)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", "x = 1\n");
    for (const char *width : {"1", "2", "-1", "-79", "4294967375", "2147483648", "x", "79x", "7.5",
                              "", " 79", "0x50"}) {
        const ToolRun run = runTool({"format", "--width", width, file});
        EXPECT_EQ(run.status, 2) << width;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.rfind("veltool: ", 0), 0U);
    }
    EXPECT_EQ(runTool({"format", "--width", "2147483647", file}).out, "x = 1\n");
    EXPECT_EQ(runTool({"format", "--width", "010", file}).status, 0) << "decimal, like all numbers";
}

TEST(Format, ReplacesTheFileAndKeepsABackup)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", rough);
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    const ToolRun run = runTool({"format", "--in-place", file});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "veltool: " + file + ": 1 comment is not in the formatted text; " + file +
                           ".bak has it\n");
    EXPECT_EQ(folder.read("a.vel"), formatted);
    EXPECT_EQ(folder.read("a.vel.bak"), rough);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.vel", "a.vel.bak"}));
    struct stat status;
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST(Format, DoesNotChangeAFormattedFile)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", formatted);
    EXPECT_EQ(runTool({"format", "-i", file}).status, 0);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.vel"});
}

TEST(Format, ChecksWithoutWriting)
{
    const TemporaryFolder folder;
    const std::string good = folder.write("good.vel", formatted);
    const std::string bad = folder.write("bad.vel", rough);
    EXPECT_EQ(runTool({"format", "--check", good}).status, 0);
    const ToolRun run = runTool({"format", "--check", bad, good});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, bad + ": not formatted\n");
    EXPECT_EQ(folder.read("bad.vel"), rough);
    EXPECT_EQ(runTool({"format", "--check", bad, folder.path("missing"), good}).status, 2);
    EXPECT_EQ(runTool({"format", "--check", "--in-place", bad}).status, 2);
}

TEST(Format, WritesToAnotherFile)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", rough);
    EXPECT_EQ(runTool({"format", "-o", folder.path("b.vel"), file}).status, 0);
    EXPECT_EQ(folder.read("b.vel"), formatted);
    EXPECT_EQ(runTool({"format", file, "-o", "-"}).out, formatted);
    EXPECT_EQ(runTool({"format", "-o", folder.path("no/b.vel"), file}).status, 2);
    const ToolRun full = runTool({"format", "-o", "/dev/full", file});
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err, "veltool: /dev/full: No space left on device\n");
}

TEST(Format, WritingOntoItselfKeepsABackup)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a.vel", rough);
    EXPECT_EQ(runTool({"format", "-o", file, file}).status, 0);
    EXPECT_EQ(folder.read("a.vel"), formatted);
    EXPECT_EQ(folder.read("a.vel.bak"), rough);
}

TEST(Format, AFileThatCannotBeWrittenDoesNotChange)
{
    const TemporaryFolder folder;
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "x" + std::to_string(i) + "=1\n";
    }
    const std::string file = folder.write("a.vel", text);
    const ToolRun run = runShell("ulimit -f 2; $VELTOOL format -i " + file);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "veltool: " + file + ": File too large\n");
    EXPECT_EQ(folder.read("a.vel"), text);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.vel"});
}

TEST(Format, RefusesToEditStandardInput)
{
    EXPECT_EQ(runTool({"format", "-i", "-"}, "x=1\n").status, 2);
    EXPECT_EQ(runTool({"format", "--check", "-"}, "x = 1\n").status, 0);
}

} // namespace
} // namespace veltool::test
