// `exit` in Perl code, in all places and also without the overridden function: the process
// must continue.
#include "velparser/tests/fakeParser.h"

#include "velparser/api/velparser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use VEL::Parser::Lite;
our ($object, $inNew, $changes);
sub new {
    CORE::exit(3) if $inNew;
    return $object = bless { database => VEL::Parser::Lite::NEW() }, shift;
}
sub readLibraries { return $_[0]{database}->loadVELData([ 'FLOW:', 'A = 1', 'B = 1', 'END' ]) }
sub updateSolverVEL { CORE::exit(4) }
sub isItemExpert { require POSIX; POSIX::exit(5) }
sub getAllowedParamStrings { my ($self, $path, $list) = @_; tie $list->[0], 'Tied'; return }
sub getAllowedParams { eval { CORE::exit(6) }; return 'caught' }
sub isParamEditable { my ($self, $path) = @_; $self->{database}->setStringValue($path, 'x' . $changes++); return 1 }

package Tied;
sub TIESCALAR { return bless [] }
sub FETCH { CORE::exit(8) }

package Number;
use overload '0+' => sub { CORE::exit(10) }, fallback => 1;
1;
)perl";

const FakeParser parser({
    {"API.pm", fakeApi},
    {"VEL/Validate.pm", "package VEL::Validate; CORE::exit(12) if $API::inValidate;\n"
                        "sub new { return bless {} } sub validateObject { CORE::exit(13) } 1;\n"},
});

class VelExit : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_STREQ(velparser::readVELLibraries(), nullptr);
        ASSERT_EQ(perl("$API::object->{database}->clearChangeHandlers; 1"), "1");
    }

    static void addHandler(const std::string &code)
    {
        ASSERT_EQ(perl("$API::object->{database}->addChangeHandler(sub {" + code + "}); 1"), "1");
    }

    /// Perl still works as before.
    void TearDown() override
    {
        EXPECT_EQ(perl("my @l = map { $_ * 2 } 1 .. 3; eval { die qq{x\\n} }; \"@l $@\""),
                  "2 4 6 x\n");
        EXPECT_EQ(perl("$?"), "0");
        ASSERT_EQ(perl("$API::object->{database}->clearChangeHandlers; 1"), "1");
    }
};

TEST(VelExitFirst, InNew)
{
    ASSERT_EQ(perl("$API::inNew = 1"), "1");
    EXPECT_STREQ(velparser::readVELLibraries(), "exit(3) called");
    EXPECT_EQ(velparser::findLiteHandle(), nullptr);
    ASSERT_EQ(perl("$API::inNew = 0"), "0");
}

TEST_F(VelExit, InAMethod)
{
    EXPECT_STREQ(velparser::updateSolverVEL(), "exit(4) called");
    EXPECT_EQ(velparser::isItemExpert("/A"), -1);
}

TEST_F(VelExit, InsideAnEval)
{
    velStringList list;
    EXPECT_STREQ(velparser::getAllowedParams("/A", &list, 0), "exit(6) called");
}

TEST_F(VelExit, WhenAResultIsRead)
{
    velStringList list;
    EXPECT_STREQ(velparser::getAllowedParamStrings("/A", &list), "exit(8) called");
}

TEST_F(VelExit, InAHandlerOfTheProgramsChange)
{
    addHandler("CORE::exit(7) if ($_[2] // '') eq 'x'");
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", "x"), "exit(7) called");
    std::optional<std::string> value;
    EXPECT_STREQ(velparser::getStringValue("/FLOW/A", &value), nullptr);
    EXPECT_EQ(value, "x");
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", "y"), nullptr);
    ASSERT_EQ(perl("$API::object->{database}->clearChangeHandlers; 1"), "1");
    addHandler("CORE::exit(9)");
    EXPECT_STREQ(velparser::deleteParam("/FLOW/A"), "exit(9) called");
    EXPECT_STREQ(velparser::deleteObj("/FLOW"), "exit(9) called");
}

TEST_F(VelExit, InAHandlerBelowAMethod)
{
    addHandler("my @deep = sort { CORE::exit(11) } 2, 1");
    EXPECT_EQ(velparser::isParamEditable("/FLOW/A"), -1);
    EXPECT_STREQ(velparser::setStringValue("/FLOW/B", "z"), "exit(11) called");
}

TEST_F(VelExit, InTheNumberOfAnAction)
{
    EXPECT_EQ(perl("$API::object->{database}->registerActionHandler(sub { bless [], 'Number' });"
                   "$API::object->{database}->invokeAction('go', undef); 'not reached'"),
              "died: exit(10) called");
}

TEST_F(VelExit, WhileThePackageLoads)
{
    ASSERT_EQ(perl("$API::inValidate = 1"), "1");
    EXPECT_STREQ(velparser::validateVELDataH(),
                 "validateVELDataLTH: Internal error: exit(12) called");
    ASSERT_EQ(perl("$API::inValidate = 0"), "0");
    EXPECT_STREQ(velparser::validateVELDataH(),
                 "validateVELDataLTH: Internal error calling validateObject: exit(13) called\n"
                 "validateVELDataLTH: Internal error calling validateObject: exit(13) called\n");
}

TEST_F(VelExit, AgainAndAgain)
{
    addHandler("my @deep = sort { CORE::exit(11) } 2, 1");
    for (int i = 0; i < 1000; ++i) {
        ASSERT_STREQ(velparser::updateSolverVEL(), "exit(4) called");
        ASSERT_STREQ(velparser::setStringValue("/FLOW/B", std::to_string(i).c_str()),
                     "exit(11) called");
        ASSERT_EQ(velparser::isParamEditable("/FLOW/A"), -1);
    }
}

/// Perl code that runs `child` in a forked process, and gives how that ended.
std::string inChild(const std::string &child)
{
    return "my $pid = fork // die 'no fork';"
           "if (!$pid) { " +
           child +
           "; require POSIX; POSIX::_exit(99) }"
           "waitpid $pid, 0; my $status = $? >> 8; $? = 0; $status";
}

TEST_F(VelExit, InAForkedChildEndsTheChild)
{
    EXPECT_EQ(perl(inChild("exit 7")), "7");
    EXPECT_EQ(perl(inChild("CORE::exit(8)")), "8");
    EXPECT_EQ(perl(inChild("eval { exit 9 }")), "9") << "no eval catches it";
    EXPECT_EQ(perl(inChild("$API::object->{database}->addChangeHandler(sub { exit 10 });"
                           "$API::object->{database}->createParam('/C', 1)")),
              "10")
        << "in a handler below a method";
    EXPECT_EQ(perl("CORE::exit(7)"), "died: exit(7) called") << "but not the program";
}

TEST_F(VelExit, InAForkedChildWritesWhatThePerlCodePrinted)
{
    EXPECT_EQ(perl("pipe my $in, my $out or die;"
                   "my $pid = fork // die;"
                   "if (!$pid) { close $in; print {$out} 'from the child'; exit 0 }"
                   "close $out; my $text = join '', <$in>; waitpid $pid, 0; $? = 0; $text"),
              "from the child");
}

} // namespace
