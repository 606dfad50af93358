// Starting the interpreter. The tests share one process, so the failures come first. The
// success comes last, because the interpreter then never ends.
#include "velparser/tests/fakeParser.h"

#include "velparser/api/velBench.h"
#include "velparser/api/velparser.h"

#include <gtest/gtest.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <locale.h>
#include <unistd.h>

namespace {

const char fakeApi[] = R"perl(
package API;
use VEL::Parser::Lite;
our $loaded;
BEGIN { $loaded++ }
sub new { return bless { database => VEL::Parser::Lite::NEW() }, shift }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}});

void ownHandler(int) {}

/// Perl reports on standard error why it does not compile; the test reads it.
const char *startQuietly(std::string *said)
{
    testing::internal::CaptureStderr();
    const char *error = velparser::startVELParser();
    *said = testing::internal::GetCapturedStderr();
    return error;
}

using VelStartupDeathTest = testing::Test;

TEST(VelStartupDeathTest, FolderNotSet)
{
    unsetenv("ZOT5_VEL_PARSER");
    EXPECT_EXIT(static_cast<void>(velparser::startVELParser()), testing::ExitedWithCode(1),
                "^Cannot find VEL parser\\.  Please set ZOT5_VEL_PARSER to point to it\\.\n$");
    EXPECT_EXIT(static_cast<void>(velparser::getStringValue("/A", nullptr)),
                testing::ExitedWithCode(1), "^Cannot find VEL parser\\.  Please set");
    setenv("ZOT5_VEL_PARSER", parser.folder().c_str(), 1);
}

TEST(VelStartupDeathTest, KeepsTheHandlerOfSigfpe)
{
    // The child is a new process, not a copy, so it starts Perl itself.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::signal(SIGFPE, ownHandler);
            const bool started = velparser::startVELParser() == nullptr;
            std::exit(started && std::signal(SIGFPE, SIG_DFL) == ownHandler ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    GTEST_FLAG_SET(death_test_style, "fast");
}

TEST(VelStartup, FolderIsMissing)
{
    setenv("ZOT5_VEL_PARSER", "/nowhere/at/all", 1);
    std::string said;
    EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
    EXPECT_NE(said.find("/nowhere/at/all/VEL/embeddedParserInit.pl"), std::string::npos) << said;
    EXPECT_EQ(velparser::findLiteHandle(), nullptr);
    setenv("ZOT5_VEL_PARSER", parser.folder().c_str(), 1);
}

TEST(VelStartup, FolderIsEmpty)
{
    setenv("ZOT5_VEL_PARSER", "", 1);
    std::string said;
    EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
    EXPECT_NE(said.find("\"/VEL/embeddedParserInit.pl\""), std::string::npos) << said;
    setenv("ZOT5_VEL_PARSER", parser.folder().c_str(), 1);
}

TEST(VelStartup, FolderNameOfAnyLength)
{
    const std::string longName(300, 'x');
    setenv("ZOT5_VEL_PARSER", ("/" + longName + "/" + longName + "/" + longName).c_str(), 1);
    std::string said;
    EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
    EXPECT_NE(said.find(longName + "/VEL/embeddedParserInit.pl"), std::string::npos) << said;
    setenv("ZOT5_VEL_PARSER", std::string(100'000, 'y').c_str(), 1);
    EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
    setenv("ZOT5_VEL_PARSER", parser.folder().c_str(), 1);
}

TEST(VelStartup, FailsAnewEachTime)
{
    parser.write("VEL/embeddedParserInit.pl", "BEGIN { die qq{not today\\n} }\n");
    std::string said;
    for (int i = 0; i < 3; ++i) {
        EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
        EXPECT_NE(said.find("not today"), std::string::npos) << said;
    }
    EXPECT_STREQ(velparser::updateSolverVEL(), "Error: Cannot parse perl code\n");
    EXPECT_STREQ(velparser::validateVELDataH(), "validateVELDataH: error finding Lite API handle");
    EXPECT_EQ(velparser::isParamEditable("/A"), -1);
    EXPECT_EQ(velparser::isItemExpert("/A"), -1);
    EXPECT_EQ(velparser::isVELLibrary("/A"), -1);
    EXPECT_EQ(velparser::findLiteHandle(), nullptr);
}

TEST(VelStartup, EveryCallSaysThatTheStartFailed)
{
    constexpr char failed[] = "Error: Cannot parse perl code\n";
    velStringList list;
    const char *const line = "A = 1";
    testing::internal::CaptureStderr();
    EXPECT_STREQ(velparser::getAllowedParamStrings("/A", &list), failed);
    EXPECT_STREQ(velparser::getAllowedParams("/A", &list, 0), failed);
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), failed);
    EXPECT_STREQ(velparser::loadVELFromFile(nullptr, nullptr), failed);
    EXPECT_STREQ(velparser::loadVELData(&line, 1), failed);
    EXPECT_STREQ(velparser::loadVELData(nullptr, 0), failed);
    EXPECT_STREQ(velparser::readVELLibraries(), failed);
    EXPECT_STREQ(velparser::runPerlScript("x.pl", {}, nullptr), failed);
    // Before their argument is checked.
    EXPECT_STREQ(velparser::validateVELObjectH(nullptr), failed);
    EXPECT_STREQ(velparser::validateParameter(nullptr), failed);
    EXPECT_STREQ(velparser::setUnitsChecking(1),
                 "validateVELObjectH: error finding Lite API handle");
    EXPECT_STREQ(velparser::setBoundsChecking(1),
                 "validateVELObjectH: error finding Lite API handle");
    EXPECT_STREQ(velparser::setStringValue("/A", "1"),
                 "setStringValue: error finding Lite API handle");
    testing::internal::GetCapturedStderr();
}

TEST(VelStartup, ExitInTheScriptIsAFailure)
{
    parser.write("VEL/embeddedParserInit.pl", "BEGIN { exit 0 }\n");
    std::string said;
    EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
    EXPECT_NE(said.find("exit(0) called"), std::string::npos) << said;
    parser.write("VEL/embeddedParserInit.pl", "BEGIN { CORE::exit(0) }\n");
    EXPECT_STREQ(startQuietly(&said), "Error: Cannot parse perl code\n");
}

TEST(VelStartup, StartsWhenMendedAndOnlyOnce)
{
    parser.write("VEL/embeddedParserInit.pl", "use API;\n$API::ran = 1;\n");
    ASSERT_STREQ(velparser::startVELParser(), nullptr);
    parser.write("VEL/embeddedParserInit.pl", "this is not Perl\n");
    EXPECT_STREQ(velparser::startVELParser(), nullptr);
    EXPECT_EQ(perl("$API::loaded"), "1");
    // Compiled, not run.
    EXPECT_EQ(perl("defined $API::ran ? 1 : 0"), "0");
    EXPECT_NE(velparser::findLiteHandle(), nullptr);
}

TEST(VelStartup, PerlSeesItsWords)
{
    EXPECT_EQ(perl("$^W"), "1");
    EXPECT_EQ(perl("$INC[0]"), parser.folder().string());
    EXPECT_EQ(perl("$0"), (parser.folder() / "VEL/embeddedParserInit.pl").string());
    EXPECT_EQ(perl("$0 = 'renamed'; $0"), "renamed");
}

TEST(VelStartup, LoadsOtherExtensions)
{
    EXPECT_EQ(perl("require List::Util; List::Util::sum(1, 2, 3)"), "6");
}

TEST(VelStartup, ExitIsAnException)
{
    EXPECT_EQ(perl("eval { exit 4 }; $@ =~ /^exit\\(4\\) called at / ? 'yes' : $@"), "yes");
    EXPECT_EQ(perl("exit").substr(0, 20), "died: exit(0) called");
}

TEST(VelStartup, LeavesTheLocaleOfTheProcessAlone)
{
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    EXPECT_EQ(perl("use POSIX (); POSIX::setlocale(POSIX::LC_ALL(), 'C'); 1.5 + 1"), "2.5");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    std::setlocale(LC_ALL, "C");
}

/// A locale with a comma in numbers, which is made if the system has none.
bool chooseGermanNumbers()
{
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr) {
        return true;
    }
    const std::string made = (parser.folder() / "de_DE.UTF-8").string();
    const std::string command = "localedef -i de_DE -f UTF-8 " + made + " 2>&1";
    if (std::system(command.c_str()) != 0) { // NOLINT(bugprone-command-processor, cert-env33-c)
        return false;
    }
    setenv("LOCPATH", parser.folder().c_str(), 1);
    return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
}

TEST(VelStartup, NumbersHaveAPointInAnyLocale)
{
    if (!chooseGermanNumbers()) {
        GTEST_SKIP() << "no locale with a comma in numbers";
    }
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(perl("1.5 + 1"), "2.5");
    EXPECT_EQ(perl("'1.5' + 1"), "2.5");
    EXPECT_EQ(perl("sprintf '%.2f', 0.25"), "0.25");
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    std::setlocale(LC_ALL, "C");
}

} // namespace
