// Command data in containers, which the tests write with the container library.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "io/Src/Main/iocntc.h"
#include "velparser/api/velparser.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use VEL::Parser::Lite;
our ($parsed, @lines, $argument) = (0);
sub new { return bless { database => VEL::Parser::Lite::NEW() }, shift }
sub parseVELData {
    my ($self, $lines, $flag) = @_;
    ($argument, @lines) = ($flag, @$lines);
    $parsed++;
    return $self->{database}->loadVELData($lines);
}
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}});

constexpr char noCommands[] =
    "The file you have specified does not contain Command File data.\n\n"
    "            Definition files created in versions of ZOT-5 earlier than ZOT-5.4 do not"
    "             contain Command File data.\n";

int ignoreMessage(const char *, std::int32_t)
{
    return 0;
}

void request(io_request number, IO_header *header, IO_data data)
{
    ASSERT_EQ(iocntc(number, ignoreMessage, header, &data), IO_OK);
}

/// Gives each test its own container.
class VelContainer : public testing::Test
{
protected:
    void SetUp() override
    {
        file_ = (parser.folder() / "run.def").string();
        std::filesystem::remove(file_);
    }

    void write(const char *what, std::int32_t when, const std::vector<std::string> &lines,
               const char *type = "STRI", const char *format = "")
    {
        constexpr std::size_t slot = IO_STRING_SLOT;
        io_header_storage names;
        io_set_text(names.what, what);
        io_set_text(names.where, "EVERY");
        io_set_text(names.type, type);
        io_set_text(names.format, format);
        names.when = when;
        names.count = static_cast<std::int32_t>(lines.size());
        std::vector<char> records(lines.size() * slot + 1);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            std::strncpy(&records[i * slot], lines[i].c_str(), slot - 1);
        }
        std::vector<std::int32_t> numbers(lines.size());
        IO_data data;
        data.strings = records.data();
        data.strings_size = names.count;
        data.integers = numbers.data();
        data.integers_size = names.count;
        IO_header header = names.header();
        open();
        request(IO_WRITE_PRIMARY_DS, &header, data);
        request(IO_CLOSE_PRIMARY, nullptr, {});
    }

    void open()
    {
        IO_data data;
        data.filename = file_.c_str();
        request(IO_OPEN_PRIMARY_WRITE, nullptr, data);
    }

    /// Damages the file at the text.
    void overwrite(const std::string &text, const std::string &by)
    {
        std::string bytes = read();
        const std::size_t at = bytes.find(text);
        ASSERT_NE(at, std::string::npos);
        bytes.replace(at, by.size(), by);
        std::ofstream(file_, std::ios::binary) << bytes;
    }

    std::string read() const
    {
        std::ifstream stream(file_, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// The message, and the text on standard output.
    std::string load(const char *type = "def")
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const std::string message = shown(velparser::loadVELFromFile(file_.c_str(), type));
        testing::internal::GetCapturedStderr();
        return message + "|" + testing::internal::GetCapturedStdout();
    }

    std::string file_;
};

std::string lines()
{
    return perl("join '|', @API::lines");
}

TEST_F(VelContainer, LinesEndWithANewline)
{
    write("G/COMMANDS", 0, {"FLOW:", "  A = 1", "", "END"});
    EXPECT_EQ(load("def"), "(null)|");
    EXPECT_EQ(lines(), "FLOW:\n|  A = 1\n|\n|END\n");
    EXPECT_EQ(perl("$API::argument"), "0");
    EXPECT_EQ(load("res"), "(null)|");
    std::optional<std::string> value;
    EXPECT_STREQ(velparser::getStringValue("/FLOW/A", &value), nullptr);
    EXPECT_EQ(value, "1");
}

TEST_F(VelContainer, RecordsOf80Characters)
{
    const std::string full = "A = " + std::string(76, 'x');
    write("G/COMMANDS", 0, {full, "B = 2"});
    EXPECT_EQ(load(), "(null)|");
    EXPECT_EQ(lines(), full + "\n|B = 2\n");
}

TEST_F(VelContainer, AFormattedFile)
{
    write("G/COMMANDS", 0, {"A = 1", "B = 2"}, "STRI", "F ");
    EXPECT_EQ(load(), "(null)|");
    EXPECT_EQ(lines(), "A = 1\n|B = 2\n");
}

TEST_F(VelContainer, TheExamples)
{
    const std::filesystem::path examples =
        std::filesystem::path(std::getenv("VEL_SOURCE_DIR")) / "examples";
    for (const char *type : {"def", "res"}) {
        SCOPED_TRACE(type);
        std::filesystem::remove(file_);
        std::filesystem::copy_file(examples / (std::string("duct.") + type), file_);
        perl("@API::lines = ()");
        EXPECT_EQ(load(type), "(null)|");
        EXPECT_EQ(perl("scalar(grep { $_ eq qq{  Title = Supply air duct, laboratory wing\n} } "
                       "@API::lines)"),
                  "1");
        std::optional<std::string> value;
        EXPECT_STREQ(velparser::getStringValue("/CASE NOTES/Title", &value), nullptr);
        EXPECT_EQ(value, "Supply air duct, laboratory wing");
    }
}

TEST_F(VelContainer, NoLinesAreParsedToo)
{
    write("G/COMMANDS", 0, {});
    const std::string before = perl("$API::parsed");
    EXPECT_EQ(load(), "(null)|");
    EXPECT_EQ(lines(), "");
    EXPECT_NE(perl("$API::parsed"), before);
}

TEST_F(VelContainer, NoSuchFile)
{
    EXPECT_EQ(load(), "load_vel_from_def failed|Fail to open the def/res file\n");
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(VelContainer, NoContainer)
{
    std::ofstream(file_) << "FLOW:\nEND\n";
    EXPECT_EQ(load(), "load_vel_from_def failed|Fail to open the def/res file\n");
    EXPECT_EQ(read(), "FLOW:\nEND\n");
}

TEST_F(VelContainer, NoCommandData)
{
    write("G/OTHER", 0, {"A = 1"});
    EXPECT_EQ(load(), std::string("load_vel_from_def failed|") + noCommands);
}

TEST_F(VelContainer, TheLargestOfSeveralWhens)
{
    write("G/COMMANDS", 3, {"A = 3"});
    write("G/COMMANDS", 12, {"A = 12"});
    write("G/COMMANDS", 7, {"A = 7"});
    EXPECT_EQ(load(), "(null)|");
    EXPECT_EQ(lines(), "A = 12\n");
}

TEST_F(VelContainer, MoreWhensThanAreToldApart)
{
    for (int when = 1; when <= 21; ++when) {
        write("G/COMMANDS", when, {"A = " + std::to_string(when)});
    }
    EXPECT_EQ(load(), "load_vel_from_def failed|"
                      "Can not locate the Command File data from the input file. Code: 17\n");
    // Then nothing is reported, so the bridge asks for WHEN 0.
    write("G/COMMANDS", 0, {"A = 0"});
    EXPECT_EQ(load(), "(null)|");
    EXPECT_EQ(lines(), "A = 0\n");
}

TEST_F(VelContainer, NotStrings)
{
    write("G/COMMANDS", 0, {"1"}, "INTR");
    EXPECT_EQ(load(), "load_vel_from_def failed|"
                      "Can not read the Command File data from the input file. Code 27\n");
}

TEST_F(VelContainer, DamagedData)
{
    write("G/COMMANDS", 0, {"A = 1", "B = 2"});
    overwrite("*ENDDATASET", "*ENDDATABET");
    EXPECT_EQ(load(), "load_vel_from_def failed|"
                      "Can not read the Command File data from the input file.\n");
}

TEST_F(VelContainer, AFailureLeavesNoFileOpen)
{
    write("G/COMMANDS", 0, {"1"}, "INTR");
    load();
    IO_data data;
    EXPECT_EQ(iocntc(IO_CLOSE_PRIMARY, ignoreMessage, nullptr, &data), IO_NO_OPEN_FILE);
    EXPECT_FALSE(std::filesystem::exists(file_ + ".lck"));
}

TEST_F(VelContainer, TheLibrarysMessagesGoToStandardError)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_STREQ(velparser::loadVELFromFile(file_.c_str(), "def"), "load_vel_from_def failed");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said.substr(0, 4), "IO: ") << said;
    EXPECT_NE(said.find("IO: iocnt: open the primary file failed\n"), std::string::npos) << said;
    testing::internal::GetCapturedStdout();
}

} // namespace
