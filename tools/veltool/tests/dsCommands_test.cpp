// veltool ds: writes, lists, reads, copies, deletes, checks and unlocks containers.
#include "io/Src/Main/element_type.h"
#include "io/bench/container_workloads.h"
#include "tools/veltool/tests/toolRun.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace veltool::test {
namespace {

class Ds : public ::testing::Test
{
protected:
    [[nodiscard]] static ToolRun ds(std::vector<std::string> words, const std::string &input = {})
    {
        words.insert(words.begin(), "ds");
        return runTool(words, input);
    }

    /// Writes a dataset at WHERE "P", WHEN 1, and returns what ds read prints.
    [[nodiscard]] std::string writtenAndRead(const std::string &type, const std::string &input,
                                             const std::string &format)
    {
        const std::string file = folder_.path("round-" + std::to_string(++files_));
        const ToolRun written = ds({"write", file, "W", "P", "1", type, "--format", format}, input);
        EXPECT_EQ(written.err, "");
        EXPECT_EQ(written.status, 0);
        const ToolRun read = ds({"read", file, "W", "P", "1"});
        EXPECT_EQ(read.err, "");
        EXPECT_EQ(read.status, 0);
        return read.out;
    }

    /// Three datasets: A at 1 and 2, B at 1.
    [[nodiscard]] std::string sample()
    {
        const std::string file = folder_.path("sample.res");
        EXPECT_EQ(ds({"write", file, "A", "P", "1", "INTR", "--format", "u"}, "1\n-2\n").status, 0);
        EXPECT_EQ(ds({"write", file, "A", "P", "2", "INTR", "--format", "F"}, "7\n").status, 0);
        EXPECT_EQ(ds({"write", file, "B", "Q", "1", "REAL", "--format", "u5"}, "0.1\n").status, 0);
        return file;
    }

    TemporaryFolder folder_;
    int files_ = 0;
};

TEST_F(Ds, NamesEveryElementTypeInTheHelp)
{
    const std::string help = ds({"write", "--help"}).out;
    for (const element_traits &type : element_table) {
        EXPECT_NE(help.find(type.name), std::string::npos) << type.name;
    }
}

TEST_F(Ds, ReadsTheWrittenValues)
{
    for (const std::string format : {"u", "u5", "l3", "L", "F"}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(writtenAndRead("INTR", "1\n-2147483648\n2147483647\n", format),
                  "1\n-2147483648\n2147483647\n");
        EXPECT_EQ(writtenAndRead("LOGL", "1\n0\nT\n", format), "1\n0\n1\n");
        EXPECT_EQ(writtenAndRead("STRI", "one  \n\n two", format), "one\n\n two\n");
        EXPECT_EQ(writtenAndRead("STRI:3", "abc\n", format), "abc\n");
        EXPECT_EQ(writtenAndRead("CHAR", "a b c\n", format), "a b c\n");
        EXPECT_EQ(writtenAndRead("STRC{INTR:2 STRI:1:8 CHAR:3}", "1\t2\tname\txyz\n3\t4\t\tuvw\n",
                                 format),
                  "1\t2\tname\txyz\n3\t4\t\tuvw\n");
        EXPECT_EQ(writtenAndRead("INTR", "", format), "");
    }
}

TEST_F(Ds, KeepsEveryBitOfBinaryNumbers)
{
    for (const std::string format : {"u", "u9", "L"}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(writtenAndRead("REAL", "0.1\n1e-45\n-3.40282347e+38\n", format),
                  "0.100000001\n1.40129846e-45\n-3.40282347e+38\n");
        EXPECT_EQ(
            writtenAndRead("DBLE", "0.1\n5e-324\n-1.7976931348623157e308\nnan\n-inf\n", format),
            "0.10000000000000001\n4.9406564584124654e-324\n-1.7976931348623157e+308\nnan\n"
            "-inf\n");
    }
    EXPECT_EQ(writtenAndRead("DBLE", "0.5\n", "F"), "0.5\n");
}

TEST_F(Ds, ConvertsOnReading)
{
    const std::string file = sample();
    EXPECT_EQ(ds({"read", file, "B", "Q", "1", "--as", "DBLE"}).out, "0.10000000149011612\n");
    EXPECT_EQ(ds({"read", file, "A", "P", "1", "--as", "LOGL"}).out, "1\n1\n");
    const ToolRun refused = ds({"read", file, "A", "P", "1", "--as", "STRI"});
    EXPECT_EQ(refused.status, 27);
    EXPECT_EQ(refused.out, "");
}

TEST_F(Ds, ReadsTheLargestWhenOfSeveral)
{
    EXPECT_EQ(ds({"read", sample(), "A", "P", "-1"}).out, "7\n");
}

TEST_F(Ds, ListsInTheOrderOfTheFile)
{
    const std::string file = sample();
    const ToolRun run = ds({"list", file, "--json"});
    ASSERT_EQ(run.status, 0);
    const auto json = nlohmann::json::parse(run.out);
    ASSERT_EQ(json.size(), 3U);
    std::string expected;
    for (const auto &entry : json) {
        for (const char *key : {"status", "what", "where"}) {
            expected += entry[key].get<std::string>() + '\t';
        }
        expected += std::to_string(entry["when"].get<int>()) + '\t';
        for (const char *key : {"format", "type"}) {
            expected += entry[key].get<std::string>() + '\t';
        }
        expected += std::to_string(entry["count"].get<int>()) + '\t' +
                    std::to_string(entry["length"].get<long>()) + '\t' +
                    std::to_string(entry["position"].get<long>()) + '\n';
    }
    EXPECT_EQ(ds({"list", file}).out, expected);
    EXPECT_EQ(expected.rfind("Y\tA\tP\t1\tu\tINTR\t2\t", 0), 0U) << expected;
    EXPECT_NE(expected.find("\nY\tA\tP\t2\tF\tINTR\t1\t"), std::string::npos) << expected;
    EXPECT_NE(expected.find("\nY\tB\tQ\t1\tu5\tREAL\t1\t"), std::string::npos) << expected;
}

TEST_F(Ds, ListsDeletedDatasetsOnlyWithAll)
{
    const std::string file = sample();
    EXPECT_EQ(ds({"delete", file, "A", "P", "1"}).status, 0);
    EXPECT_EQ(ds({"list", file}).out.rfind("Y\tA\tP\t2\t", 0), 0U);
    EXPECT_EQ(ds({"list", "--all", file}).out.rfind("N\tA\tP\t1\tu\tINTR\t2\t", 0), 0U);
    EXPECT_EQ(ds({"read", file, "A", "P", "1"}).status, 17);
}

TEST_F(Ds, LocatesInTheOrderOfTheLibrary)
{
    const std::string file = sample();
    const ToolRun run = ds({"locate", file, "*", "P", "-1"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.rfind("A\tP\t2\t", 0), 0U) << run.out;
    EXPECT_NE(run.out.find("\nA\tP\t1\t"), std::string::npos) << run.out;
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 2);
    EXPECT_EQ(runTool({"ds", "locate", "-", "B", "Q", "1"}, folder_.read("sample.res")).out,
              ds({"locate", file, "B", "Q", "1"}).out);
}

TEST_F(Ds, LocatesInJson)
{
    const std::string file = sample();
    const auto found = nlohmann::json::parse(ds({"locate", "--json", file, "A", "P", "-1"}).out);
    ASSERT_EQ(found.size(), 2U);
    std::string lines;
    for (const auto &dataset : found) {
        EXPECT_EQ(dataset.size(), 5U) << dataset;
        lines += dataset["what"].get<std::string>() + '\t' + dataset["where"].get<std::string>() +
                 '\t' + dataset["when"].dump() + '\t' + dataset["length"].dump() + '\t' +
                 dataset["position"].dump() + '\n';
    }
    EXPECT_EQ(lines, ds({"locate", file, "A", "P", "-1"}).out);
    const ToolRun none = ds({"locate", "--json", file, "Z", "P", "1"});
    EXPECT_EQ(none.status, 17);
    EXPECT_EQ(none.out, "");
}

TEST_F(Ds, KeepsAttributesAndBlockFactor)
{
    const std::string file = folder_.path("a");
    EXPECT_EQ(ds({"write", file, "A", "P", "1", "INTR", "--format", "F", "--blockfactor", "7",
                  "--attribute", "first one", "--attribute", "second"},
                 "1\n")
                  .status,
              0);
    const std::string bytes = folder_.read("a");
    const std::size_t first = bytes.find("first one");
    EXPECT_NE(first, std::string::npos);
    EXPECT_NE(bytes.find("second", first), std::string::npos);
    EXPECT_NE(bytes.find("\nBLOCKFACTOR\x1b"
                         "7 "),
              std::string::npos)
        << bytes;
}

TEST_F(Ds, CopiesAllOrMatchingDatasets)
{
    const std::string file = sample();
    const std::string all = folder_.path("all");
    const std::string some = folder_.path("some");
    EXPECT_EQ(ds({"copy", file, all}).status, 0);
    EXPECT_EQ(ds({"list", all}).out, ds({"list", file}).out);
    EXPECT_EQ(ds({"copy", file, some, "A", "P", "2"}).status, 0);
    EXPECT_EQ(ds({"copy", file, some, "?", "Q", "-1"}).status, 0);
    EXPECT_EQ(ds({"copy", file, some, "?", "Z", "-1"}).status, 17);
    EXPECT_EQ(ds({"read", some, "A", "P", "2"}).out, "7\n");
    EXPECT_EQ(ds({"read", some, "B", "Q", "1"}).out, "0.100000001\n");
    EXPECT_EQ(ds({"read", some, "A", "P", "1"}).status, 17);
}

TEST_F(Ds, ReturnsTheCodeOfTheLibrary)
{
    const std::string file = sample();
    const std::string before = folder_.read("sample.res");
    const ToolRun missing = ds({"locate", file, "Z", "P", "1"});
    EXPECT_EQ(missing.status, 17);
    EXPECT_EQ(missing.err,
              "veltool: " + file + ": no dataset matches WHAT \"Z\", WHERE \"P\" and WHEN 1\n");
    EXPECT_EQ(ds({"delete", folder_.path("none"), "A", "P", "1"}).status,
              ds({"list", folder_.path("none")}).status);
    EXPECT_NE(ds({"list", folder_.path("none")}).status, 0);
    EXPECT_FALSE(folder_.has("none"));
    EXPECT_EQ(ds({"write", file, "A", "P", "3", "WORD"}, "1\n").status, 12);
    EXPECT_EQ(ds({"write", file, "A", "P", "3", "INTR"}, "1\nx\n").status, 10);
    EXPECT_EQ(ds({"write", file, "A", "P", "3", "INTR"}, "1\nx\n").err,
              "veltool: line 2: not of type INTR: \"x\": Error reading from disk.\n");
    EXPECT_EQ(ds({"write", file, "A", "P", "3", "STRI:2"}, "abc\n").status, 14);
    EXPECT_EQ(ds({"write", file, "A", "P", "3", "STRC{INTR:2}"}, "1\n").status, 18);
    EXPECT_EQ(ds({"write", file, "A", "P", "3", "STRC{INTR:2}"}, "1\t2\t3\n").status, 10);
    EXPECT_EQ(ds({"write", file, std::string(76, 'A'), "P", "3", "INTR"}, "1\n").status, 14);
    EXPECT_EQ(ds({"list", folder_.write("text", "FLOW:\nEND\n")}).status, 20);
    EXPECT_EQ(folder_.read("sample.res"), before);
}

TEST_F(Ds, VerifiesAFileWithoutFaults)
{
    const std::string file = sample();
    const std::string before = folder_.read("sample.res");
    const ToolRun run = ds({"verify", file});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(nlohmann::json::parse(ds({"verify", "--json", file}).out).size(), 0U);
    EXPECT_EQ(folder_.read("sample.res"), before);
}

TEST_F(Ds, ReportsAFaultWithItsByte)
{
    std::string bytes = folder_.read(std::filesystem::path(sample()).filename());
    bytes.resize(bytes.size() - 1);
    const std::string file = folder_.write("short.res", bytes);
    const ToolRun run = ds({"verify", file});
    // The recorded size comes after "*INFO" and its line feed.
    const std::string sizes = "6\t20\tthe recorded file size is " +
                              std::to_string(bytes.size() + 1) + ", the file has " +
                              std::to_string(bytes.size()) + " bytes\n";
    EXPECT_EQ(run.out.rfind(sizes, 0), 0U) << run.out;
    EXPECT_EQ(run.status, 20);
    const auto json = nlohmann::json::parse(ds({"verify", "--json", file}).out);
    EXPECT_EQ(json[0]["position"], 6);
    EXPECT_EQ(json[0]["code"], 20);
    EXPECT_EQ(folder_.read("short.res"), bytes);
}

TEST_F(Ds, RebuildsTheIndexAndReportsLostDatasets)
{
    const std::string file = sample();
    EXPECT_EQ(ds({"rebuild", file}).out, "datasets\t3\n");
    EXPECT_EQ(ds({"verify", file}).out, "");

    // Cut inside the last dataset, as after a full disk.
    const auto list = nlohmann::json::parse(ds({"list", "--json", file}).out);
    const std::size_t last = list[2]["position"];
    folder_.write("sample.res", folder_.read("sample.res").substr(0, last + 40));
    EXPECT_NE(ds({"verify", file}).status, 0);
    const ToolRun run = ds({"rebuild", file});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.rfind("datasets\t2\n", 0), 0U) << run.out;
    EXPECT_NE(run.out.find("\ndropped\t40\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\nremark\trecreate_indextable: "), std::string::npos) << run.out;
    EXPECT_EQ(ds({"verify", file}).out, "");
    EXPECT_EQ(ds({"read", file, "A", "P", "1"}).out, "1\n-2\n");
    EXPECT_EQ(ds({"read", file, "B", "Q", "1"}).status, 17);
}

TEST_F(Ds, PrintsARebuildAsJson)
{
    const std::string file = sample();
    auto json = nlohmann::json::parse(ds({"rebuild", "--json", file}).out);
    EXPECT_EQ(json["datasets"], 3);
    EXPECT_TRUE(json["lost"].empty());
    EXPECT_TRUE(json["remarks"].empty());
    EXPECT_EQ(json["dropped"], 0);

    // The dataset is marked as deleted in the file, but not in the index.
    const auto list = nlohmann::json::parse(ds({"list", "--json", file}).out);
    const std::size_t second = list[1]["position"];
    std::string bytes = folder_.read("sample.res");
    folder_.write("sample.res", bytes.replace(second, 2, "DF"));
    json = nlohmann::json::parse(ds({"rebuild", "--json", file}).out);
    EXPECT_EQ(json["datasets"], 2);
    ASSERT_EQ(json["lost"].size(), 1U);
    for (const char *key : {"what", "where", "when", "length", "position"}) {
        EXPECT_EQ(json["lost"][0][key], list[1][key]) << key;
    }
}

TEST_F(Ds, ReportsFaultsAfterTheFirst)
{
    const std::string file = sample();
    const auto list = nlohmann::json::parse(ds({"list", "--json", file}).out);
    std::string bytes = folder_.read("sample.res");
    for (const std::size_t dataset : {0, 2}) {
        const std::size_t position = list[dataset]["position"];
        bytes[bytes.find("NUMBER", position)] = 'M';
    }
    folder_.write("sample.res", bytes);
    const auto faults = nlohmann::json::parse(ds({"verify", "--json", file}).out);
    ASSERT_EQ(faults.size(), 2U) << faults;
    EXPECT_EQ(faults[0]["position"], list[0]["position"]);
    EXPECT_EQ(faults[1]["position"], list[2]["position"]);
    EXPECT_EQ(ds({"verify", file}).status, faults[0]["code"]);
}

TEST_F(Ds, ShowsProgressOnATerminalOnly)
{
    if (!hasTerminals()) {
        GTEST_SKIP() << "there are no pseudo-terminals here";
    }
    const std::string file = folder_.path("many.res");
    const std::string line =
        "script -qec '\"$VELTOOL\" ds verify \"" + file + "\"' /dev/null </dev/null";
    // Enough datasets to take more than a second on this machine.
    ToolRun run;
    std::size_t shown = std::string::npos;
    for (int count = 400000; shown == std::string::npos; count *= 2) {
        ASSERT_LT(count, 10000000);
        ASSERT_EQ(container_workloads::append_small(file, count), 0);
        run = runShell(line);
        EXPECT_EQ(run.status, 0) << run.out;
        shown = run.out.find('%');
    }
    const ToolRun plain = ds({"verify", file});
    EXPECT_EQ(plain.out + plain.err, "");
    // The line shows numbers with "%" and is empty at the end.
    EXPECT_EQ(run.out[0], '\r');
    EXPECT_EQ(run.out.find('\n'), std::string::npos) << run.out;
    const std::string cleared = "\r\x1b[K";
    EXPECT_EQ(run.out.substr(run.out.size() - cleared.size()), cleared);
}

TEST_F(Ds, RefusesToRebuildAFileThatIsNotAContainer)
{
    const std::string file = folder_.write("text", "FLOW:\nEND\n");
    EXPECT_EQ(ds({"rebuild", file}).status, 20);
    EXPECT_EQ(folder_.read("text"), "FLOW:\nEND\n");
    EXPECT_NE(ds({"rebuild", folder_.path("none")}).status, 0);
    EXPECT_FALSE(folder_.has("none"));
}

/// The message is one sentence, with the names as they were given.
TEST_F(Ds, ReportsInOneSentenceWhatDoesNotExist)
{
    const std::string file = sample();
    const std::string absent = " no dataset matches WHAT \"A\", WHERE \"Z\" and any WHEN\n";
    for (const char *command : {"read", "locate", "delete"}) {
        const ToolRun run = ds({command, file, "A", "Z", "-1"});
        EXPECT_EQ(run.status, 17);
        EXPECT_EQ(run.err, "veltool: " + file + ":" + absent);
        const std::string none = folder_.path("none");
        const ToolRun missing = ds({command, none, "A", "Z", "-1"});
        EXPECT_EQ(missing.status, 8);
        EXPECT_EQ(missing.err, "veltool: " + none + ": the file does not exist\n");
    }
    const std::string target = folder_.path("target");
    const ToolRun copied = ds({"copy", file, target, "A", "Z", "-1"});
    EXPECT_EQ(copied.status, 17);
    EXPECT_EQ(copied.err, "veltool: " + file + ":" + absent);
    EXPECT_FALSE(folder_.has("target"));
}

/// The index finds the dataset, but its header was changed.
TEST_F(Ds, ReadReturnsTheCodeOfABadHeader)
{
    const std::string file = folder_.path("bad.res");
    EXPECT_EQ(ds({"write", file, "A", "P", "1", "INTR", "--format", "u"}, "1\n2\n").status, 0);
    const std::string bytes = folder_.read("bad.res");

    std::string length = bytes; // of the record of NUMBER
    length[bytes.find("NUMBER") - 4] = '\x7f';
    folder_.write("bad.res", length);
    ToolRun run = ds({"read", file, "A", "P", "1"});
    EXPECT_EQ(run.status, 14);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "veltool: zotreadHdrString: not enough buffer space for string: have 81, "
                       "require > 127\nveltool: " +
                           file + ": Not enough allocated memory for requested IO operation.\n");

    // NUMBER is too large, and the record after it is bad. No memory may be
    // allocated for NUMBER elements.
    const std::string large = folder_.path("large.res");
    std::string values;
    for (int i = 0; i < 1000; ++i) {
        values += "1\n";
    }
    EXPECT_EQ(ds({"write", large, "A", "P", "1", "DBLE", "--format", "u5"}, values).status, 0);
    std::string number = folder_.read("large.res");
    const std::size_t digits = number.find("NUMBER") + 7;
    ASSERT_EQ(number.substr(digits, 4), "1000");
    number.replace(digits, 4, "9e99");
    folder_.write("large.res", number);
    EXPECT_EQ(ds({"read", large, "A", "P", "1"}).status, 15);
    number.replace(digits, 4, "9999");
    number[number.find("BLOCKFACTOR") - 4] = '\x7f';
    folder_.write("large.res", number);
    run = ds({"read", large, "A", "P", "1"});
    EXPECT_EQ(run.status, 14);
    EXPECT_EQ(run.out, "");

    // If the rest of the header is correct, NUMBER is compared with the size of
    // the file.
    const std::string plain = folder_.path("plain.res");
    EXPECT_EQ(ds({"write", plain, "A", "P", "1", "INTR", "--format", "u"}, values).status, 0);
    number = folder_.read("plain.res");
    number.replace(number.find("NUMBER") + 7, 4, "9999");
    folder_.write("plain.res", number);
    run = ds({"read", plain, "A", "P", "1"});
    EXPECT_EQ(run.status, 10);
    EXPECT_EQ(run.out, "");
}

TEST_F(Ds, RefusesAnAttributeThatIsTooLong)
{
    const std::string file = folder_.path("a");
    const std::string fits(80, 'x');
    const auto write = [&](const std::string &attribute) {
        return ds({"write", file, "A", "P", "1", "INTR", "--attribute", attribute}, "1\n");
    };
    EXPECT_EQ(write(fits).status, 0);
    EXPECT_EQ(write(fits + "  ").status, 0);
    for (const std::string &attribute : {fits + "y", fits + " y", fits + fits}) {
        const ToolRun run = write(attribute);
        EXPECT_EQ(run.status, 14);
        EXPECT_EQ(run.err.find("veltool: iocntc: header input is wrong\n"), 0U) << run.err;
    }
}

/// With a lock file of level 0 from another program, every command that writes
/// fails, even if it reads first. The lock file stays.
TEST_F(Ds, KeepsALockOfLevelZero)
{
    const std::string file = sample();
    const std::string vel = folder_.write("a.vel", "A = 1\n");
    const std::string before = folder_.read("sample.res");
    const std::string level = "         0\n";
    folder_.write("sample.res.lck", level);
    EXPECT_EQ(ds({"delete", file, "A", "P", "1"}).status, 21);
    EXPECT_EQ(ds({"rebuild", file}).status, 21);
    EXPECT_EQ(ds({"write", file, "A", "P", "9", "INTR"}, "1\n").status, 21);
    EXPECT_EQ(ds({"copy", file, file}).status, 21);
    EXPECT_EQ(runTool({"embed", vel, file}).status, 21);
    EXPECT_EQ(ds({"list", file}).status, 0);
    EXPECT_EQ(ds({"delete", file, "A", "P", "1"}).status, 21);
    EXPECT_EQ(folder_.read("sample.res"), before);
    EXPECT_EQ(folder_.read("sample.res.lck"), level);
}

/// Only ds unlock removes a lock, and only if no process on this machine has the
/// file open.
TEST_F(Ds, UnlocksAFileThatNoProcessHasOpen)
{
    const std::string file = sample();
    EXPECT_EQ(ds({"unlock", file}).out, file + ": not locked\n");
    struct Lock
    {
        const char *text;
        const char *said;
    };
    for (const Lock lock : {Lock{"        -1\n", "locked for writing (level -1)"},
                            Lock{"         2\n", "locked for reading (level 2)"},
                            Lock{"         0\n", "locked for reading (level 0)"},
                            Lock{"what?", "locked; the lock file has no level"}}) {
        folder_.write("sample.res.lck", lock.text);
        const ToolRun run = ds({"unlock", file});
        EXPECT_EQ(run.status, 0) << run.err;
        // Without root rights, some processes may be hidden.
        const std::string line = file + ": no process ";
        const std::size_t known = run.out.find("on this machine has it open\n");
        const std::string seen = known != std::string::npos
                                     ? line + "on this machine has it open\n"
                                     : line + "that this user can see has it open\n";
        EXPECT_EQ(run.out, file + ": " + lock.said + '\n' + seen + file + ": lock removed\n");
        EXPECT_FALSE(folder_.has("sample.res.lck"));
    }
    EXPECT_EQ(ds({"delete", file, "A", "P", "1"}).status, 0);
    EXPECT_EQ(ds({"unlock", folder_.path("none")}).status, 24);
    EXPECT_EQ(ds({"unlock", "-"}).status, 2);
}

TEST_F(Ds, KeepsTheLockOfAProcessThatHasTheFileOpen)
{
    const std::string file = sample();
    folder_.write("sample.res.lck", "        -1\n");
    // The shell has the file open while it runs the tool.
    const auto held = [&](const std::string &options) {
        return runShell("exec 9<'" + file + "'; \"$VELTOOL\" ds unlock " + options + " '" + file +
                        "' 2>&1 9<&-");
    };
    ToolRun run = held("");
    EXPECT_EQ(run.status, 21);
    EXPECT_NE(run.out.find(file + ": open in process "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(": not unlocked, because process "), std::string::npos) << run.out;
    EXPECT_TRUE(folder_.has("sample.res.lck"));
    run = held("--force");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find(file + ": open in process "), std::string::npos) << run.out;
    EXPECT_FALSE(folder_.has("sample.res.lck"));
}

TEST_F(Ds, ReturnsTwoForUsageErrors)
{
    const std::string file = sample();
    EXPECT_EQ(ds({}).status, 2);
    EXPECT_EQ(ds({"lst", file}).status, 2);
    EXPECT_EQ(ds({"list"}).status, 2);
    EXPECT_EQ(ds({"list", "--fast", file}).status, 2);
    EXPECT_EQ(ds({"locate", file, "A", "P", "first"}).status, 2);
    EXPECT_EQ(ds({"copy", file, folder_.path("x"), "A"}).status, 2);
    EXPECT_EQ(ds({"list", "--help"}).status, 0);
    EXPECT_FALSE(folder_.has("x"));
}

} // namespace
} // namespace veltool::test
