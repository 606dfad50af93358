// Command data in def and res files: extract, embed, and the commands that read it
// directly.
#include "tools/veltool/tests/toolRun.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace veltool::test {
namespace {

const std::string text = "DOMAIN: Pipe\n"
                         "  Kind = Fluid # comment\n"
                         "  Location = Inlet, \\\n"
                         "    Outlet\n"
                         "END\n";

class ContainerData : public ::testing::Test
{
protected:
    ContainerData()
    {
        vel_ = folder_.write("a.vel", text);
        file_ = folder_.path("a.def");
        EXPECT_EQ(write("FIELD", "ZONE 1", "0", "INTR", "1\n2\n"), 0);
    }

    [[nodiscard]] int write(const std::string &what, const std::string &where,
                            const std::string &when, const std::string &type,
                            const std::string &input) const
    {
        return runTool({"ds", "write", file_, what, where, when, type}, input).status;
    }

    [[nodiscard]] std::string extracted() const { return runTool({"extract", file_}).out; }

    TemporaryFolder folder_;
    std::string vel_;
    std::string file_;
};

TEST_F(ContainerData, IsExtractedAsItWasEmbedded)
{
    const ToolRun run = runTool({"embed", vel_, file_});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(extracted(), text);
    EXPECT_EQ(runTool({"extract", file_, "-o", folder_.path("out.vel")}).status, 0);
    EXPECT_EQ(folder_.read("out.vel"), text);
    EXPECT_EQ(runTool({"ds", "read", file_, "FIELD", "ZONE 1", "0"}).out, "1\n2\n");
    EXPECT_EQ(runTool({"ds", "verify", file_}).out, "");
}

TEST_F(ContainerData, ReplacesThePreviousCommandData)
{
    ASSERT_EQ(write("G/COMMANDS", "EVERY", "3", "STRI", "A = 1\n"), 0);
    ASSERT_EQ(write("G/COMMANDS", "EVERY", "7", "STRI", "A = 2\n"), 0);
    EXPECT_EQ(extracted(), "A = 2\n");
    EXPECT_EQ(runTool({"embed", vel_, file_}).status, 0);
    EXPECT_EQ(extracted(), text);
    const std::string located = runTool({"ds", "locate", file_, "G/COMMANDS", "EVERY", "-1"}).out;
    EXPECT_EQ(located.rfind("G/COMMANDS\tEVERY\t7\t", 0), 0U) << located;
    EXPECT_NE(located.find("\nG/COMMANDS\tEVERY\t3\t"), std::string::npos) << located;
    EXPECT_EQ(std::count(located.begin(), located.end(), '\n'), 2) << located;
}

TEST_F(ContainerData, IsTheOneAtZeroIfThereAreMoreThanTwenty)
{
    for (int when = 0; when < 21; ++when) {
        ASSERT_EQ(write("G/COMMANDS", "EVERY", std::to_string(when), "STRI",
                        "A = " + std::to_string(when) + "\n"),
                  0);
    }
    EXPECT_EQ(extracted(), "A = 0\n");
    EXPECT_EQ(runTool({"embed", vel_, file_}).status, 0);
    EXPECT_EQ(extracted(), text);
    // Only the dataset at zero has changed.
    EXPECT_EQ(runTool({"ds", "read", file_, "G/COMMANDS", "EVERY", "1"}).out, "A = 1\n");
    const std::string located = runTool({"ds", "locate", file_, "G/COMMANDS", "EVERY", "-1"}).out;
    EXPECT_EQ(std::count(located.begin(), located.end(), '\n'), 21) << located;
}

TEST_F(ContainerData, IsNotFoundAmongMoreThanTwentyWithoutOneAtZero)
{
    for (int when = 1; when < 22; ++when) {
        ASSERT_EQ(write("G/COMMANDS", "EVERY", std::to_string(when), "STRI", "A = 1\n"), 0);
    }
    const ToolRun run = runTool({"extract", file_});
    EXPECT_EQ(run.status, 17);
    EXPECT_EQ(run.err, "veltool: " + file_ +
                           ": Can not locate the Command File data from the input file. Code: 17 "
                           "(of more than 20 datasets with Command File data none has WHEN 0)\n");
}

TEST_F(ContainerData, FailsForAMissingFileWithOneSentence)
{
    const std::string none = folder_.path("none.def");
    const ToolRun run = runTool({"embed", vel_, none});
    EXPECT_EQ(run.status, 8);
    EXPECT_EQ(run.err, "veltool: " + none + ": the file does not exist\n");
    EXPECT_FALSE(folder_.has("none.def"));
    EXPECT_EQ(runTool({"extract", none}).err, run.err);
}

/// Runs lines in the shell and kills them at random moments. It adjusts its
/// estimate of the duration after each run, because the first measurement is
/// inexact on a busy machine.
class Killer
{
public:
    explicit Killer(unsigned seed, const std::string &line) : random_(seed)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(runShell(line).status, 0) << line;
        seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    ToolRun run(const std::string &line)
    {
        const double part = std::uniform_real_distribution<double>(0, 1.2)(random_);
        ToolRun run =
            runShell("timeout -s KILL " + std::to_string(0.001 + part * seconds_) + ' ' + line);
        const bool killed = run.status == 128 + SIGKILL;
        EXPECT_TRUE(killed || run.status == 0) << run.status << run.out;
        seconds_ *= killed ? 1.05 : 0.9;
        killed_ += killed ? 1 : 0;
        return run;
    }

    int killed() const { return killed_; }

private:
    std::mt19937 random_;
    double seconds_ = 0;
    int killed_ = 0;
};

TEST_F(ContainerData, AKilledEmbedKeepsThePreviousOrTheNewData)
{
    std::string texts[2];
    std::string lines[2];
    for (int i = 0; i < 2; ++i) {
        for (int line = 0; line < 3000; ++line) {
            texts[i]
                .append(1, 'P')
                .append(std::to_string(line))
                .append(i == 0 ? " = 0\n" : " = 1\n");
        }
        const std::string file = folder_.write(i == 0 ? "zeros" : "ones", texts[i]);
        lines[i]
            .append("\"$VELTOOL\" embed '")
            .append(file)
            .append("' '")
            .append(file_)
            .append("' 2>&1");
    }
    Killer killer(3, lines[0]);
    for (int round = 1; killer.killed() < 20; ++round) {
        ASSERT_LT(round, 500);
        const std::string before = extracted();
        const ToolRun run = killer.run(lines[round % 2]);
        std::filesystem::remove(file_ + ".lck");
        const std::string after = extracted();
        const bool whole = after == texts[round % 2] || (run.status != 0 && after == before);
        ASSERT_TRUE(whole) << round << ": " << run.status << run.out;
        ASSERT_EQ(runTool({"ds", "read", file_, "FIELD", "ZONE 1", "0"}).out, "1\n2\n");
    }
    EXPECT_EQ(runShell(lines[1]).status, 0);
    EXPECT_EQ(runTool({"ds", "verify", file_}).out, "");
    const std::string located = runTool({"ds", "locate", file_, "G/COMMANDS", "EVERY", "-1"}).out;
    EXPECT_EQ(std::count(located.begin(), located.end(), '\n'), 1) << located;
}

TEST_F(ContainerData, AKilledWriteKeepsTheOtherDatasets)
{
    std::string values;
    for (int i = 0; i < 30000; ++i) {
        values += std::to_string(i) + '\n';
    }
    const std::string input = folder_.write("values", values);
    const auto line = [&](int when) {
        return "\"$VELTOOL\" ds write '" + file_ + "' N P " + std::to_string(when) + " INTR <'" +
               input + "' 2>&1";
    };
    Killer killer(5, line(0));
    for (int when = 1; killer.killed() < 15; ++when) {
        ASSERT_LT(when, 500);
        const ToolRun run = killer.run(line(when));
        std::filesystem::remove(file_ + ".lck");
        const ToolRun read = runTool({"ds", "read", file_, "N", "P", std::to_string(when)});
        // The dataset is complete or does not exist.
        ASSERT_TRUE(read.status == 0 ? read.out == values : read.status == 17) << read.err;
        ASSERT_TRUE(read.status == 0 || run.status != 0);
        ASSERT_EQ(runTool({"ds", "read", file_, "N", "P", "0"}).out, values);
    }
    EXPECT_EQ(runTool({"ds", "rebuild", file_}).status, 0);
    EXPECT_EQ(runTool({"ds", "verify", file_}).out, "");
}

TEST_F(ContainerData, IsReadDirectly)
{
    ASSERT_EQ(runTool({"embed", vel_, file_}).status, 0);
    for (const char *command : {"tree", "format"}) {
        EXPECT_EQ(runTool({command, file_}).out, runTool({command, vel_}).out);
    }
    EXPECT_EQ(runTool({"get", file_, "/DOMAIN:Pipe/Location"}).out, "Inlet, Outlet\n");
    EXPECT_EQ(runTool({"find", file_, "fluid"}).out, file_ + ":2: /DOMAIN:Pipe/Kind = Fluid\n");
    const std::string bytes = folder_.read("a.def");
    EXPECT_EQ(runTool({"get", "-", "/DOMAIN:Pipe/Kind"}, bytes).out, "Fluid\n");
    EXPECT_EQ(runTool({"extract", "-"}, bytes).out, text);
}

TEST_F(ContainerData, IsNotFormattedOrSetInPlace)
{
    ASSERT_EQ(runTool({"embed", vel_, file_}).status, 0);
    const std::string before = folder_.read("a.def");
    EXPECT_EQ(runTool({"format", "-i", file_}).status, 1);
    EXPECT_EQ(runTool({"format", "-o", file_, file_}).status, 1);
    EXPECT_EQ(runTool({"set", file_, "/DOMAIN:Pipe/Kind", "Solid"}).status, 1);
    EXPECT_EQ(runTool({"extract", file_, "-o", file_}).status, 2);
    EXPECT_EQ(folder_.read("a.def"), before);
    EXPECT_FALSE(folder_.has("a.def.bak"));
}

TEST_F(ContainerData, LongLinesAreStoredFormatted)
{
    const std::string longLine =
        "A = " + std::string(40, 'x') + ", " + std::string(40, 'y') + " # comment\n";
    const std::string file = folder_.write("long.vel", longLine);
    EXPECT_EQ(runTool({"embed", file, file_}).status, 0);
    EXPECT_EQ(extracted(), runTool({"format", file}).out);

    const std::string unbroken = std::string(100, 'x');
    EXPECT_EQ(runTool({"embed", folder_.write("x.vel", "A = " + unbroken + "\n"), file_}).status,
              0);
    EXPECT_EQ(runTool({"get", file_, "/A"}).out, unbroken + "\n");
}

TEST_F(ContainerData, ExamplesEqualTheResultOfTheirScript)
{
    const char *source = std::getenv("VEL_SOURCE_DIR");
    if (source == nullptr) {
        FAIL() << "VEL_SOURCE_DIR is not set";
    }
    const std::string examples = std::string(source) + "/examples/";
    const ToolRun made = runShell("perl '" + examples + "make-containers.pl' \"$VELTOOL\" '" +
                                  folder_.path() + "' 2>&1");
    ASSERT_EQ(made.status, 0) << made.out;
    const std::string formatted = runTool({"format", examples + "duct.vel"}).out;
    for (const std::string name : {"duct.def", "duct.res"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(runTool({"ds", "verify", examples + name}).status, 0);
        EXPECT_EQ(runTool({"format", examples + name}).out, formatted);
        EXPECT_EQ(runTool({"extract", examples + name}).out,
                  runTool({"extract", folder_.path(name)}).out);
    }
    const std::string result = examples + "duct.res";
    EXPECT_EQ(runTool({"ds", "read", result, "PRESSURE", "ZONE 1", "-1"}).out,
              runTool({"ds", "read", folder_.path("duct.res"), "PRESSURE", "ZONE 1", "30"}).out);
}

TEST_F(ContainerData, StandardInputIsReadOnly)
{
    for (const std::vector<std::string> &words : std::vector<std::vector<std::string>>{
             {"embed", vel_, "-"},
             {"ds", "write", "-", "W", "P", "1", "INTR"},
             {"ds", "delete", "-", "W", "P", "1"},
             {"ds", "copy", file_, "-"},
             {"ds", "rebuild", "-"},
         }) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.status, 2) << words[1];
        EXPECT_EQ(run.err.rfind("veltool: cannot change standard input; name a file", 0), 0U)
            << run.err;
        EXPECT_FALSE(std::filesystem::exists("-"));
    }
}

TEST_F(ContainerData, MessagesUseTheGivenNameOfStandardInput)
{
    const ToolRun made =
        runTool({"ds", "write", folder_.path("b.def"), "W", "P", "1", "INTR"}, "1\n");
    ASSERT_EQ(made.status, 0) << made.err;
    const std::string bytes = folder_.read("b.def");
    EXPECT_EQ(runTool({"extract", "-"}, bytes).err.rfind("veltool: -: ", 0), 0U);
    EXPECT_EQ(runTool({"ds", "read", "-", "X", "P", "1"}, bytes).err.rfind("veltool: -: ", 0), 0U);
    EXPECT_EQ(runTool({"ds", "locate", "-", "X", "P", "1"}, bytes).err.rfind("veltool: -: ", 0),
              0U);
}

TEST_F(ContainerData, ReturnsTheCodeOfTheLibrary)
{
    EXPECT_EQ(runTool({"extract", file_}).status, 17);
    EXPECT_EQ(runTool({"tree", file_}).status, 2);
    EXPECT_EQ(runTool({"extract", vel_}).status, 20);
    EXPECT_EQ(runTool({"embed", vel_, vel_}).status, 20);
    EXPECT_EQ(folder_.read("a.vel"), text);
    const ToolRun missing = runTool({"embed", vel_, folder_.path("none")});
    EXPECT_EQ(missing.status, runTool({"ds", "list", folder_.path("none")}).status);
    EXPECT_FALSE(folder_.has("none"));
    const std::string before = folder_.read("a.def");
    EXPECT_EQ(runTool({"embed", folder_.write("bad", "no sense\n"), file_}).status, 2);
    EXPECT_EQ(folder_.read("a.def"), before);
}

} // namespace
} // namespace veltool::test
