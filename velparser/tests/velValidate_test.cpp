// The validation driver with a validator that does what the test says.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velapilt/src/velHandle_p.h"
#include "velparser/api/velValidate_p.h"
#include "velparser/api/velparser.h"

#include <string>
#include <vector>

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use VEL::Parser::Lite;
our $refused = 'no object';
sub new {
    die "$refused\n" if $refused;
    return bless { database => VEL::Parser::Lite::NEW() }, shift;
}
sub readLibraries { return $_[0]{database}->loadVELData([ 'FLOW:', 'A = 1', 'END' ]) }
1;
)perl";

/// Marks each object and its parameters, unless there is a finding for it.
const char fakeValidator[] = R"perl(
package VEL::Validate;
use strict;
our (@calls, %finding, $new, $destroyed, $during);
sub new { my $class = shift; return $new->($class, @_) if $new; return bless { database => shift }, $class }
sub DESTROY { $destroyed++ }
sub validateObject {
    my ($self, $path) = @_;
    my $database = $self->{database};
    push @calls, $path;
    $during->($database, $path) if $during;
    die $finding{$path}[0] if ref $finding{$path};
    return $finding{$path} if defined $finding{$path} && length $finding{$path};
    $database->setValid($path, 1);
    $database->getChildParamList($path, \my @names);
    for my $name (@names) { $database->setValid("$path/$name", $_) for 1, 2 }
    return $finding{$path};
}
sub validateParam { push @calls, "param $_[1]"; return $finding{$_[1]} }
sub setUnitsChecking { push @calls, "units $_[1]"; return }
sub setBoundsChecking { push @calls, "bounds $_[1]"; return '' }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}, {"VEL/Validate.pm", fakeValidator}});

velHandlePtr load(const std::vector<const char *> &lines)
{
    velHandlePtr handle(velCreateHandle());
    EXPECT_STREQ(loadVELData(handle.get(), lines.data(), static_cast<std::int32_t>(lines.size())),
                 nullptr);
    return handle;
}

/// The calls since this function was called last.
std::string calls()
{
    return perl("my $c = join ' ', @VEL::Validate::calls; @VEL::Validate::calls = (); $c");
}

std::string validated(velHandle *handle, const char *path = "/")
{
    return shown(velparser::validateVELData(handle, path));
}

void setUp(const std::string &code)
{
    ASSERT_EQ(perl("require VEL::Validate; package VEL::Validate; our (%finding, $new, $during); " +
                   code + "; 1"),
              "1");
}

class VelValidate : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_STREQ(velparser::startVELParser(), nullptr);
        ::setUp("%finding = (); $new = undef; $during = undef; @calls = ()");
    }
};

// --- The walk -------------------------------------------------------------------

TEST_F(VelValidate, EveryObjectOnceParentsFirst)
{
    const velHandlePtr data = load({"FLOW:", "DOMAIN: a", "P = 1", "IN:", "END", "END", "DOMAIN: b",
                                    "END", "END", "TIME:", "END"});
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/ /FLOW /FLOW/DOMAIN:a /FLOW/DOMAIN:a/IN /FLOW/DOMAIN:b /TIME");
    EXPECT_EQ(isValid(data.get(), "/"), 3);
    EXPECT_EQ(isValid(data.get(), "/FLOW/DOMAIN:a/IN"), 3);
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "");
}

TEST_F(VelValidate, OnlyWhatHasChanged)
{
    const velHandlePtr data =
        load({"FLOW:", "DOMAIN: a", "P = 1", "END", "DOMAIN: b", "END", "END", "TIME:", "END"});
    EXPECT_EQ(validated(data.get()), "(null)");
    calls();
    ASSERT_STREQ(setStringValue(data.get(), "/FLOW/DOMAIN:a/P", "2"), nullptr);
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/FLOW/DOMAIN:a");
    EXPECT_EQ(isValid(data.get(), "/"), 3);
}

TEST_F(VelValidate, ASubtreeOnly)
{
    const velHandlePtr data = load({"FLOW:", "DOMAIN: a", "END", "END", "TIME:", "END"});
    EXPECT_EQ(validated(data.get(), " /FLOW // DOMAIN : a"), "(null)");
    EXPECT_EQ(calls(), "/FLOW/DOMAIN:a");
    EXPECT_EQ(validated(data.get(), "/FLOW"), "(null)");
    EXPECT_EQ(calls(), "/FLOW");
    EXPECT_EQ(isValid(data.get(), "/"), 0);
}

// The cleaned path is used as it is: the current path and ".." have no effect.
TEST_F(VelValidate, APathThatIsNotAFullOneDoesNotExist)
{
    const velHandlePtr data = load({"FLOW:", "DOMAIN: a", "END", "END"});
    ASSERT_STREQ(pushPath(data.get(), "/FLOW"), nullptr);
    for (const char *path :
         {"", " ", ".", "FLOW", "DOMAIN:a", "./DOMAIN:a", "../FLOW", "/FLOW/..", "/FLOW/../FLOW"}) {
        EXPECT_EQ(validated(data.get(), path), "validateVELData: path does not exist\n") << path;
    }
    EXPECT_EQ(calls(), "");
    EXPECT_EQ(validated(data.get(), " //FLOW / "), "(null)");
    EXPECT_EQ(calls(), "/FLOW /FLOW/DOMAIN:a");
}

TEST_F(VelValidate, RulesAreNeverLookedAt)
{
    const velHandlePtr data = load({"RULES:", "OBJECT: X", "P = 1", "END", "END"});
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/");
    EXPECT_EQ(isValid(data.get(), "/RULES"), 3);
    EXPECT_EQ(isValid(data.get(), "/RULES/OBJECT:X"), 0);
    EXPECT_EQ(isValid(data.get(), "/"), 3);
    // Also if it is requested itself; the rule does not apply below it.
    EXPECT_EQ(validated(data.get(), "/RULES"), "(null)");
    EXPECT_EQ(calls(), "");
    EXPECT_EQ(validated(data.get(), "/RULES/OBJECT:X"), "(null)");
    EXPECT_EQ(calls(), "/RULES/OBJECT:X");
}

TEST_F(VelValidate, AnUnmarkedParameterKeepsItsParentOpen)
{
    const velHandlePtr data = load({"FLOW:", "P = 1", "END"});
    setUp("$during = sub { return if $_[1] ne '/FLOW';"
          " $_[0]->setValid('/FLOW', 1); die qq{late\\n} }");
    EXPECT_EQ(validated(data.get()),
              "validateVELDataLTH: Internal error calling validateObject: late\n");
    EXPECT_EQ(isValid(data.get(), "/FLOW"), 1);
    EXPECT_EQ(isValid(data.get(), "/"), 1);
    calls();
    // The object is marked, so the validator is not called again, but everything below it
    // still counts as not checked.
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "");
    EXPECT_EQ(isValid(data.get(), "/"), 1);
}

TEST_F(VelValidate, NothingInAnEmptyDatabase)
{
    const velHandlePtr data(velCreateHandle());
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "");
    EXPECT_EQ(validated(data.get(), "/FLOW"), "validateVELData: path does not exist\n");
}

TEST_F(VelValidate, AnUnknownPath)
{
    const velHandlePtr data = load({"FLOW:", "END"});
    EXPECT_EQ(validated(data.get(), "/NOWHERE"), "validateVELData: path does not exist\n");
    EXPECT_EQ(calls(), "");
}

TEST_F(VelValidate, DeepData)
{
    const velHandlePtr data(velCreateHandle());
    for (int i = 0; i < 2000; ++i) {
        ASSERT_STREQ(parseVELLineH(data.get(), "A:", 0), nullptr);
    }
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(perl("scalar @VEL::Validate::calls"), "2001");
    EXPECT_EQ(isValid(data.get(), "/"), 3);
}

TEST_F(VelValidate, AValidatorMayChangeTheTree)
{
    const velHandlePtr data = load({"A:", "B: x", "END", "B: y", "END", "END", "C:", "END"});
    setUp("$during = sub { my ($d, $path) = @_;"
          " $d->deleteObj('/A') if $path eq '/A/B:x';"
          " $d->createObject('/D', 0) if $path eq '/C' }");
    EXPECT_EQ(validated(data.get()), "(null)");
    // Deleted nodes are skipped, new nodes are visited.
    EXPECT_EQ(calls(), "/ /A /A/B:x /C /D");
    EXPECT_EQ(havePath(data.get(), "/A"), 0);
    EXPECT_EQ(isValid(data.get(), "/D"), 3);
    EXPECT_EQ(isValid(data.get(), "/"), 3);
}

TEST_F(VelValidate, WhatComesBeforeTheWalkIsVisitedToo)
{
    const velHandlePtr data = load({"B:", "E: x", "END", "END"});
    setUp("$during = sub { my ($d, $path) = @_;"
          " $d->createObject('/B/E:y', 0) if $path eq '/B/E:x';"
          " $d->createObject('/B/E:y/F', 0) if $path eq '/B/E:y' };"
          " $finding{'/B/E:y/F'} = 'new and wrong'");
    EXPECT_EQ(validated(data.get()), "new and wrong\n");
    EXPECT_EQ(calls(), "/ /B /B/E:x /B/E:y /B/E:y/F");
    EXPECT_EQ(isValid(data.get(), "/B"), 1);
    EXPECT_EQ(isValid(data.get(), "/B/E:x"), 3);
}

TEST_F(VelValidate, AChildFoundDoneIsSkippedUnlessALaterOneMakesItInvalid)
{
    const velHandlePtr data = load({"A:", "END", "B:", "END", "C:", "END"});
    EXPECT_EQ(validated(data.get()), "(null)");
    calls();
    ASSERT_STREQ(setValid(data.get(), "/B", 0, true), nullptr);
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/B");
    ASSERT_STREQ(setValid(data.get(), "/B", 0, true), nullptr);
    setUp("$during = sub { my ($d, $path) = @_; $d->setValid('/A', 0) if $path eq '/B' }");
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/B /A");
}

TEST_F(VelValidate, AnObjectMadeInvalidByALaterOneIsNotHidden)
{
    const velHandlePtr data = load({"A:", "END", "B:", "END"});
    setUp("$during = sub { my ($d, $path) = @_; $d->setValid('/A', 0) if $path eq '/B' }");
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/ /A /B");
    EXPECT_EQ(isValid(data.get(), "/"), 1);
    setUp("$during = undef");
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(calls(), "/A");
    EXPECT_EQ(isValid(data.get(), "/"), 3);
}

// --- Findings ------------------------------------------------------------------------

TEST_F(VelValidate, FindingsAreLines)
{
    const velHandlePtr data = load({"A:", "B: x", "END", "B: y", "END", "END", "C:", "END"});
    setUp("%finding = ('/A' => 'no line end', '/A/B:x' => qq{one\\ntwo\\n}, '/C' => '0')");
    EXPECT_EQ(validated(data.get()), "no line end\none\ntwo\n0\n");
    EXPECT_EQ(calls(), "/ /A /A/B:x /A/B:y /C");
    EXPECT_EQ(isValid(data.get(), "/"), 1);
    EXPECT_EQ(isValid(data.get(), "/A"), 0);
    EXPECT_EQ(isValid(data.get(), "/A/B:y"), 3);
    // Only items with findings are checked again.
    EXPECT_EQ(validated(data.get()), "no line end\none\ntwo\n0\n");
    EXPECT_EQ(calls(), "/A /A/B:x /C");
    setUp("%finding = ()");
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(isValid(data.get(), "/"), 3);
}

TEST_F(VelValidate, ManyFindings)
{
    std::vector<std::string> headers;
    std::vector<const char *> lines;
    for (int i = 0; i < 300; ++i) {
        headers.push_back("A: a" + std::to_string(i));
    }
    for (const std::string &header : headers) {
        lines.push_back(header.c_str());
        lines.push_back("END");
    }
    const velHandlePtr data = load(lines);
    setUp("$during = sub { $finding{$_[1]} = 'x' x 997 }");
    EXPECT_EQ(validated(data.get()).size(), 301u * 998u);
}

TEST_F(VelValidate, FindingsAreTheHandlesErrorText)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("%finding = ('/A' => '100%s of it')");
    const char *text = velparser::validateVELData(data.get(), "/");
    EXPECT_STREQ(text, "100%s of it\n");
    EXPECT_EQ(data->errorText, text);
}

TEST_F(VelValidate, AnEmptyResultIsNotRecorded)
{
    const velHandlePtr data = load({"A:", "END"});
    ASSERT_STREQ(velparser::validateVELData(data.get(), "/"), nullptr);
    const char *kept = velRecordError(data.get(), "kept");
    EXPECT_STREQ(velparser::callValidationMethod(data.get(), "setBoundsChecking", {"1"}), nullptr);
    EXPECT_EQ(data->errorText, kept);
    EXPECT_STREQ(kept, "kept");
}

// --- The validator -----------------------------------------------------------------------

TEST_F(VelValidate, MadeOncePerDatabaseAndFreedWithIt)
{
    velHandlePtr data = load({"A:", "END"});
    setUp("$made = 0; $destroyed = 0; our $made;"
          "$new = sub { $made++; bless { database => $_[1] }, $_[0] }");
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(validated(data.get(), "/A"), "(null)");
    EXPECT_EQ(perl("\"$VEL::Validate::made $VEL::Validate::destroyed\""), "1 0");
    data.reset();
    EXPECT_EQ(perl("\"$VEL::Validate::made $VEL::Validate::destroyed\""), "1 1");
}

TEST_F(VelValidate, WhoKeepsTheDatabaseIsLeftWithNothing)
{
    velHandlePtr data = load({"A:", "END"});
    setUp("our $kept; our $last = ''; $new = sub { $kept = $_[1]; bless { database => $_[1] }, "
          "$_[0] }");
    EXPECT_EQ(validated(data.get()), "(null)");
    EXPECT_EQ(perl("$VEL::Validate::kept->havePath('/A')"), "1");
    data.reset();
    EXPECT_EQ(perl("eval { $VEL::Validate::kept->havePath('/A') }; substr $@, 0, 41"),
              "self is not of type VEL::Parser::Lite at ");
    EXPECT_EQ(perl("undef $VEL::Validate::kept; 'gone'"), "gone");
}

TEST_F(VelValidate, AValidatorThatEndsItsObject)
{
    velHandlePtr data = load({"A:", "END"});
    setUp("$during = sub { my ($d, $path) = @_; $d->DESTROY if $path eq '/A' }");
    constexpr char refused[] = "validateVELDataLTH: Internal error calling validateObject: "
                               "self is not of type VEL::Parser::Lite at ";
    EXPECT_EQ(validated(data.get()).substr(0, sizeof refused - 1), refused);
    EXPECT_EQ(havePath(data.get(), "/A"), 1);
    setUp("$during = undef");
    EXPECT_EQ(validated(data.get()).substr(0, sizeof refused - 1), refused);
    data.reset();
}

TEST_F(VelValidate, AValidatorThatIsNoObject)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("$new = sub { 'NoSuchPackage' }");
    const std::string said = validated(data.get());
    EXPECT_EQ(said.substr(0, 59), "validateVELDataLTH: Internal error calling validateObject: ");
    EXPECT_NE(said.find("\"NoSuchPackage\""), std::string::npos) << said;
}

TEST_F(VelValidate, AResultOfZeroIsAFinding)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("%finding = ('/A' => 0)");
    EXPECT_STREQ(velparser::callValidationMethod(data.get(), "validateParam", {"/A"}), "0");
    setUp("%finding = ('/A' => '')");
    EXPECT_STREQ(velparser::callValidationMethod(data.get(), "validateParam", {"/A"}), nullptr);
}

// At that time the tree is deleted already, and the database is empty.
TEST_F(VelValidate, AValidatorMayUseTheDatabaseAsItGoes)
{
    velHandlePtr data = load({"A:", "END"});
    setUp("our $last; $new = sub { bless { database => $_[1] }, 'Leaving' };"
          "@Leaving::ISA = 'VEL::Validate';"
          "*Leaving::DESTROY = sub { my $d = $_[0]{database};"
          " $last = join ' ', $d->havePath('/A'), $d->getCurrentPath,"
          " $d->loadVELLine('B:', 0) // 'made', $d->havePath('/B') }");
    EXPECT_EQ(validated(data.get()), "(null)");
    data.reset();
    EXPECT_EQ(perl("$VEL::Validate::last"), "0 / made 1");
}

TEST_F(VelValidate, NewFails)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("$new = sub { die qq{not made\\n} }");
    EXPECT_EQ(validated(data.get()),
              "validateVELDataLTH: Internal error creating validator: not made\n");
    // Not only the first time.
    EXPECT_EQ(validated(data.get()),
              "validateVELDataLTH: Internal error creating validator: not made\n");
    setUp("$new = sub { undef }");
    EXPECT_EQ(validated(data.get()), "validateVELDataLTH: Error creating new validator object");
    setUp("$new = undef");
    EXPECT_EQ(validated(data.get()), "(null)");
}

TEST_F(VelValidate, ThePackageCannotBeLoaded)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("our $kept = delete $INC{'VEL/Validate.pm'};"
          "unshift @INC, sub { die qq{gone\\n} if $_[1] eq 'VEL/Validate.pm' }");
    EXPECT_EQ(validated(data.get()), "validateVELDataLTH: Internal error: gone\n");
    EXPECT_EQ(validated(data.get()), "validateVELDataLTH: Internal error: gone\n");
    EXPECT_EQ(perl("shift @INC; $INC{'VEL/Validate.pm'} = $VEL::Validate::kept; 1"), "1");
    EXPECT_EQ(validated(data.get()), "(null)");
}

TEST_F(VelValidate, TheDatabaseCannotBeWrapped)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("our $kept = delete $INC{'VEL/Parser/Lite.pm'};"
          "unshift @INC, sub { die qq{gone\\n} if $_[1] eq 'VEL/Parser/Lite.pm' }");
    EXPECT_EQ(validated(data.get()), "validateVELDataLTH: memory error");
    EXPECT_EQ(perl("shift @INC; $INC{'VEL/Parser/Lite.pm'} = $VEL::Validate::kept; 1"), "1");
    EXPECT_EQ(validated(data.get()), "(null)");
}

TEST_F(VelValidate, TheValidatorComesBeforeThePath)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("$new = sub { die qq{not made\\n} }");
    EXPECT_EQ(validated(data.get(), "/NOWHERE"),
              "validateVELDataLTH: Internal error creating validator: not made\n");
}

TEST_F(VelValidate, APathOfAParameter)
{
    const velHandlePtr data = load({"A:", "P = 1", "END"});
    setUp("$finding{'/A/P'} = 'not an object'");
    EXPECT_EQ(validated(data.get(), "/A/P"), "not an object\n");
    setUp("%finding = ()");
    EXPECT_EQ(validated(data.get(), "/A/P"), "(null)");
    EXPECT_EQ(calls(), "/A/P /A/P");
    EXPECT_EQ(isValid(data.get(), "/A/P"), 3);
}

TEST_F(VelValidate, AMethodDies)
{
    const velHandlePtr data = load({"A:", "END"});
    setUp("%finding = ('/A' => [qq{why\\n}])");
    EXPECT_EQ(validated(data.get()),
              "validateVELDataLTH: Internal error calling validateObject: why\n");
    EXPECT_STREQ(velparser::callValidationMethod(data.get(), "validateParam", {"/A/P"}), nullptr);
    EXPECT_EQ(
        std::string(velparser::callValidationMethod(data.get(), "noSuch", {"/A"})).substr(0, 70),
        "validateVELDataLTH: Internal error calling noSuch: Can't locate object");
}

// --- The default instance ---------------------------------------------------------------

TEST(VelValidateDefault, WithoutADatabase)
{
    EXPECT_STREQ(velparser::validateVELDataH(), "validateVELDataH: error finding Lite API handle");
    for (const char *error : {velparser::validateVELObjectH("/"), velparser::validateParameter("/"),
                              velparser::setUnitsChecking(1), velparser::setBoundsChecking(1)}) {
        EXPECT_STREQ(error, "validateVELObjectH: error finding Lite API handle");
    }
}

TEST(VelValidateDefault, Calls)
{
    ASSERT_EQ(perl("$API::refused = ''; 1"), "1");
    ASSERT_STREQ(velparser::readVELLibraries(), nullptr);
    calls();
    EXPECT_STREQ(velparser::validateVELDataH(), nullptr);
    EXPECT_EQ(calls(), "/ /FLOW");
    EXPECT_STREQ(velparser::validateVELObjectH("/FLOW"), nullptr);
    EXPECT_STREQ(velparser::validateVELObjectH(nullptr), "validateObject : Invalid arguments\n");
    EXPECT_STREQ(velparser::validateParameter(nullptr), "validateParameter : Invalid arguments");
    EXPECT_STREQ(velparser::validateParameter("/FLOW/A"), nullptr);
    setUp("%finding = ('/FLOW/A' => 'wrong')");
    EXPECT_STREQ(velparser::validateParameter("/FLOW/A"), "wrong");
    EXPECT_STREQ(velparser::setUnitsChecking(1), nullptr);
    EXPECT_STREQ(velparser::setBoundsChecking(-2), nullptr);
    EXPECT_EQ(calls(), "param /FLOW/A param /FLOW/A units 1 bounds -2");
}

} // namespace
