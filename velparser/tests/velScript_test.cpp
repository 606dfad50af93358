// A user's scripts in the embedded interpreter.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velparser/api/velparser.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace {

const char fakeApi[] = R"perl(
package API;
use VEL::Parser::Lite;
our @seen;
sub new { return bless { database => VEL::Parser::Lite::NEW() }, shift }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}});

/// Runs a script of this text; its message, or "status N".
std::string run(const std::string &text, const std::vector<std::string> &arguments = {})
{
    const std::string script = parser.write("script file.pl", text);
    int status = -1;
    const char *error = velparser::runPerlScript(script, arguments, &status);
    return error != nullptr ? error : "status " + std::to_string(status);
}

std::string printed(const std::string &text, const std::vector<std::string> &arguments = {})
{
    testing::internal::CaptureStdout();
    const std::string result = run(text, arguments);
    const std::string output = testing::internal::GetCapturedStdout();
    return output + result;
}

TEST(VelScript, EndsWell)
{
    EXPECT_EQ(printed("print 'hello '"), "hello status 0");
    EXPECT_EQ(printed(""), "status 0");
    EXPECT_EQ(printed("#!/usr/bin/perl\nuse strict; 1;\n__END__\nnot perl"), "status 0");
}

TEST(VelScript, TakesItsWords)
{
    EXPECT_EQ(printed("print scalar(@ARGV), qq{|$_} for @ARGV; print q{ }",
                      {"-x", "a b", "", "it's \"q\""}),
              "4|-x4|a b4|4|it's \"q\" status 0");
    EXPECT_EQ(printed("print scalar(@ARGV), q{ }"), "0 status 0");
    EXPECT_EQ(printed("print $0 =~ /script file.pl$/ && $0 eq __FILE__ ? 'named ' : $0"),
              "named status 0");
}

TEST(VelScript, HasVariablesOfItsOwnInTheEnvironment)
{
    const char *name = "VEL_SCRIPT_TEST";
    const velparser::ScriptVariables variables{{name, "one two"}};
    const std::string script =
        parser.write("variables.pl", "my $child = `printf %s \"\\$VEL_SCRIPT_TEST\"`;"
                                     "my $seen = $ENV{VEL_SCRIPT_TEST};"
                                     "$ENV{VEL_SCRIPT_TEST} = 'changed';"
                                     "exit($seen eq 'one two' && $child eq $seen ? 5 : 6);");
    const auto run = [&] {
        int status = -1;
        EXPECT_EQ(shown(velparser::runPerlScript(script, {}, variables, &status)), "(null)");
        return status;
    };
    EXPECT_EQ(run(), 5);
    EXPECT_EQ(std::getenv(name), nullptr);
    EXPECT_EQ(perl("exists $ENV{VEL_SCRIPT_TEST} ? 'left' : 'gone'"), "gone");
    // The previous values are restored.
    perl("$ENV{VEL_SCRIPT_TEST} = 'former'");
    EXPECT_EQ(run(), 5);
    EXPECT_STREQ(std::getenv(name), "former");
    perl("delete $ENV{VEL_SCRIPT_TEST}");
}

TEST(VelScript, ExitEndsItWithAStatus)
{
    EXPECT_EQ(run("exit 3; die"), "status 3");
    EXPECT_EQ(run("exit"), "status 0");
    EXPECT_EQ(run("exit 256 + 7"), "status 7");
    EXPECT_EQ(run("sub f { for (1) { exit 4 } } f(); die"), "status 4");
    EXPECT_EQ(run("eval { exit 5 }; die 'caught'"), "status 5");
    EXPECT_EQ(run("eval 'exit 6'; die 'caught'"), "status 6");
    EXPECT_EQ(run("my @s = sort { exit 8 } 1, 2; die"), "status 8");
    EXPECT_EQ(run("BEGIN { exit 9 } die"), "status 9");
}

TEST(VelScript, ExitIsAnExceptionAgainAfterwards)
{
    EXPECT_EQ(run("exit 3"), "status 3");
    EXPECT_EQ(perl("eval { exit 4 }; substr $@, 0, 14"), "exit(4) called");
}

TEST(VelScript, ManyExitsLeaveNothingBehind)
{
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(run("my @kept = (1) x 100; for my $x (@kept) { exit 2 }"), "status 2");
    }
    EXPECT_EQ(printed("print 'still here '"), "still here status 0");
}

TEST(VelScript, DyingIsTheMessage)
{
    EXPECT_EQ(run("\ndie 'for a reason'"),
              "for a reason at " + (parser.folder() / "script file.pl").string() + " line 2.\n");
    EXPECT_EQ(run("die qq{plain\\n}"), "plain\n");
    EXPECT_NE(run("this is (no perl").find("syntax error"), std::string::npos);
    EXPECT_EQ(run("package T; use overload '\"\"' => sub { 'an object' }; die bless {}"),
              "an object");
}

TEST(VelScript, CannotBeRead)
{
    int status = 7;
    EXPECT_STREQ(velparser::runPerlScript("/nowhere.pl", {}, &status),
                 "runPerlScript: cannot read /nowhere.pl: No such file or directory");
    EXPECT_EQ(shown(velparser::runPerlScript(parser.folder().string(), {}, &status)),
              "runPerlScript: cannot read " + parser.folder().string() + ": Is a directory");
    EXPECT_EQ(status, 7);
}

TEST(VelScript, EndBlocksRunOnceAndMayChangeTheStatus)
{
    EXPECT_EQ(printed("END { print 'end ' } print 'main '"), "main end status 0");
    EXPECT_EQ(printed("END { print \"end $? \" } exit 3"), "end 3 status 3");
    EXPECT_EQ(printed("END { $? = 4 } exit 3"), "status 4");
    EXPECT_EQ(printed("END { exit 5 } exit 3"), "status 5");
    EXPECT_EQ(printed("END { print 'end ' } die qq{dead\\n}"), "end dead\n");
    EXPECT_EQ(printed("END { die qq{and buried\\n} } die qq{dead\\n}"), "dead\n");
    EXPECT_EQ(printed("1"), "status 0");
}

TEST(VelScript, HasDataBehindItsEnd)
{
    EXPECT_EQ(printed("print <DATA>;\n__END__\none\ntwo\n"), "one\ntwo\nstatus 0");
    EXPECT_EQ(printed("print <DATA>;\n__DATA__\none\n"), "one\nstatus 0");
    // Only the first of the two marks has an effect; the second is data.
    EXPECT_EQ(printed("print <DATA>;\n__DATA__\none\n__END__\ntwo\n"),
              "one\n__END__\ntwo\nstatus 0");
    EXPECT_EQ(printed("print <DATA>;\n__END__\none\n__DATA__\ntwo\n"),
              "one\n__DATA__\ntwo\nstatus 0");
}

TEST(VelScript, WarnsOnlyWhenAsked)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(run("my $x; my $y = $x . 'a'; $main::once = 1"), "status 0");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(run("use warnings; my $x; my $y = $x . 'a'"), "status 0");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("uninitialized"), std::string::npos);
    EXPECT_EQ(perl("$^W"), "1");
}

TEST(VelScript, UsesTheDatabase)
{
    EXPECT_EQ(printed("use strict; use VEL::Parser::Lite;\n"
                      "my $d = VEL::Parser::Lite::NEW();\n"
                      "print $d->loadVELData(['A = 1']) // 'loaded ', $d->havePath('/A'), ' '"),
              "loaded 1 status 0");
}

TEST(VelScript, ExitInAHandlerFinishesTheDatabaseFirst)
{
    EXPECT_EQ(run("use VEL::Parser::Lite;\n"
                  "our $d = VEL::Parser::Lite::NEW();\n"
                  "$d->loadVELData(['FLOW:', 'A = 1', 'END']);\n"
                  "$d->addChangeHandler(sub { exit 6 });\n"
                  "$d->setStringValue('/FLOW/A', 2);\n"
                  "die 'went on'"),
              "status 6");
    EXPECT_EQ(perl("my $v; $main::d->getStringValue('/FLOW/A', \\$v); $v"), "2");
    EXPECT_EQ(run("use VEL::Parser::Lite;\n"
                  "my $d = VEL::Parser::Lite::NEW();\n"
                  "$d->addChangeHandler(sub { exit 7 });\n"
                  "eval { $d->loadVELData(['FLOW:', 'A = 1', 'END']) };\n"
                  "die 'went on'"),
              "status 7");
}

} // namespace
