// Runs each measurement on a small file and checks its output.
#include "tools/veltool/tests/toolRun.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace velBench {
namespace {

using veltool::test::runShell;
using veltool::test::TemporaryFolder;
using veltool::test::ToolRun;

ToolRun runBench(const std::string &words)
{
    return runShell("\"$VEL_BUILD_DIR/bin/velbench\" " + words);
}

std::string minimalExample()
{
    const char *source = std::getenv("VEL_SOURCE_DIR");
    EXPECT_NE(source, nullptr);
    return std::string(source != nullptr ? source : "") + "/examples/minimal.vel";
}

/// The JSON object that a call prints.
nlohmann::json measure(const std::string &words)
{
    const ToolRun run = runBench(words);
    EXPECT_EQ(run.status, 0) << run.err;
    auto result = nlohmann::json::parse(run.out, nullptr, false);
    EXPECT_TRUE(result.is_object()) << run.out;
    EXPECT_EQ(result.size(), 5U);
    EXPECT_GT(result.value("seconds", 0.0), 0.0);
    EXPECT_TRUE(result["rss"].is_number_integer());
    return result;
}

nlohmann::json measure(const std::string &name, const std::string &words)
{
    return measure(name + ' ' + words);
}

class VelbenchTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists("/proc/self/statm")) {
            GTEST_SKIP() << "without /proc the memory of the process cannot be read";
        }
    }

    TemporaryFolder folder_;
    const std::string file_ = folder_.write("a.vel", "A: a\n  x = 1\n  y = twenty\nEND\nz = 3\n");
};

TEST_F(VelbenchTest, ParsesAndFormats)
{
    const auto parse = measure("vel.parse " + file_);
    EXPECT_EQ(parse["name"], "vel.parse");
    EXPECT_EQ(parse["bytes"], 36);
    EXPECT_EQ(parse["params"], 3);
    const auto format = measure("vel.format " + file_);
    EXPECT_EQ(format["name"], "vel.format");
    EXPECT_EQ(format["bytes"], 36) << "in another order";
    EXPECT_EQ(format["params"], 3);
}

TEST_F(VelbenchTest, WritesAndReadsContainers)
{
    const std::string data = folder_.write("doubles", std::string(8000, 'x'));
    for (const std::string name : {"ds.write.raw", "ds.read.raw", "ds.write.z5", "ds.read.z5"}) {
        const auto result = measure(name, folder_.path() + ' ' + data);
        EXPECT_EQ(result["name"], name);
        EXPECT_EQ(result["bytes"], 8000);
        EXPECT_EQ(result["params"], 1000);
    }
    for (const std::string name : {"ds.append", "ds.open", "ds.locate"}) {
        const auto result = measure(name, folder_.path());
        EXPECT_EQ(result["name"], name);
        EXPECT_EQ(result["params"], 20000);
    }
    EXPECT_FALSE(folder_.has("velbench.res"));
}

TEST_F(VelbenchTest, LooksUp)
{
    const std::string paths = folder_.write("paths", "/A:a/x\n/A:a/y\n/z\n/z\n");
    const auto result = measure("vel.lookup " + file_ + ' ' + paths);
    EXPECT_EQ(result["params"], 1000000);
    EXPECT_EQ(result["bytes"], 250000 * (1 + 6 + 1 + 1));
    const std::string wrong = folder_.write("wrong", "/A:a/x\n/no\n");
    EXPECT_EQ(runBench("vel.lookup " + file_ + ' ' + wrong).err,
              "velbench: vel.lookup: /no: the file has no such parameter\n");
}

TEST_F(VelbenchTest, CallsPerl)
{
    EXPECT_EQ(measure("perl.call")["params"], 200000);
    EXPECT_EQ(measure("perl.method")["params"], 200000);
}

TEST_F(VelbenchTest, Validates)
{
    const std::string example = minimalExample();
    for (const std::string name : {"rules.cold", "rules.validate"}) {
        const auto result = measure(name, example);
        EXPECT_EQ(result["name"], name);
        EXPECT_GT(result["bytes"], 100);
        EXPECT_GT(result["params"], 2);
    }
    EXPECT_GT(measure("rules.cold " + example)["rss"], 1000000);
    EXPECT_EQ(measure("rules.edit " + example + " /FLOW/DOMAIN:Tank/Kind")["params"], 1);
    EXPECT_EQ(runBench("rules.edit " + example + " /FLOW/None").status, 2);
    const ToolRun missing = runBench("rules.cold " + folder_.path("missing"));
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.out, "");
}

TEST_F(VelbenchTest, OpensTheEditor)
{
    const std::string example = minimalExample();
    const auto result = measure("editor.open " + example);
    EXPECT_EQ(result["name"], "editor.open");
    EXPECT_GT(result["rss"], 1000000);
    const ToolRun missing = runBench("editor.open " + folder_.path("missing"));
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.out, "");
}

TEST_F(VelbenchTest, WorksInTheEditor)
{
    const std::string example = minimalExample();
    for (const std::string name : {"editor.edit", "editor.next", "editor.scroll"}) {
        const auto result = measure(name, example);
        EXPECT_EQ(result["name"], name);
        EXPECT_EQ(result["params"], 1);
    }
    const auto rows = measure("editor.memory " + example);
    EXPECT_EQ(rows["params"], measure("editor.find " + example)["params"]);
#ifndef __SANITIZE_ADDRESS__ // the sanitizer replaces the heap
    EXPECT_GT(rows["rss"], 0);
#endif
    EXPECT_EQ(runBench("editor.edit " + folder_.path("missing")).status, 2);
}

TEST_F(VelbenchTest, ReportsWhatItCannotMeasure)
{
    for (const char *words : {"", "no.call", "vel.parse", "vel.parse a b", "vel.parse /no/such",
                              "vel.lookup /no/such /no/such", "perl.call x"}) {
        const ToolRun run = runBench(words);
        EXPECT_EQ(run.status, 2) << words;
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err, "");
    }
    EXPECT_EQ(runBench("--help").status, 0);
    EXPECT_EQ(runBench("vel.parse " + file_ + " > /dev/full").status, 2);
}

} // namespace
} // namespace velBench
