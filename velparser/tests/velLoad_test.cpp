// Loading: what reaches the Perl object, and what comes back.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velparser/api/velparser.h"

#include <array>
#include <string>
#include <vector>

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use Scalar::Util ();
use VEL::Parser::Lite;
our ($fail, @parsed, $argument, $refused, @arrays) = ('');
sub watch { push @arrays, $_[0]; Scalar::Util::weaken($arrays[-1]) }
sub new {
    die "$refused\n" if $refused;
    return bless { database => VEL::Parser::Lite::NEW() }, shift;
}
sub readTextFile {
    my ($self, $file, $lines) = @_;
    watch($lines);
    return "cannot read $file" if $fail eq 'read';
    die "cannot even try\n" if $fail eq 'try';
    @$lines = ("from $file", 'second');
    return '';
}
sub parseVELData {
    my ($self, $lines, $flag) = @_;
    watch($lines);
    ($argument, @parsed) = ($flag, @$lines);
    return $fail eq 'parse' ? 'cannot parse' : undef;
}
our @variables = qw(ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS);
our $named;
sub readLibraries {
    $named = join '|', map { $_ // '-' } @ENV{@variables};
    return @_ == 1 ? $fail : 'too many arguments';
}
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}});

std::string parsed()
{
    return perl("join '|', @API::parsed");
}

void failIn(const std::string &step)
{
    ASSERT_EQ(perl("$API::fail = '" + step + "'; 1"), "1");
}

TEST(VelLoad, EveryCallNeedsTheObject)
{
    ASSERT_EQ(perl("$API::refused = 'not yet'; 1"), "1");
    const std::array lines{"A = 1"};
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), "not yet\n");
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 1), "not yet\n");
    EXPECT_STREQ(velparser::readVELLibraries(), "not yet\n");
    ASSERT_EQ(perl("$API::refused = ''; 1"), "1");
}

TEST(VelLoad, ArgumentsAreLookedAtBeforeTheObjectIsMade)
{
    ASSERT_EQ(perl("$API::refused = 'not yet'; 1"), "1");
    EXPECT_STREQ(velparser::loadVELFromFile(nullptr, "vel"), "Invalid file or file type");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "VEL"),
                 "fileType is invalid (it should be vel, def or res)");
    EXPECT_STREQ(velparser::loadVELData(nullptr, 1), "loadVELData : Invalid arguments");
    // The container is read first too, so its failure is reported.
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_STREQ(velparser::loadVELFromFile("/nowhere/x.def", "def"), "load_vel_from_def failed");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Fail to open the def/res file\n");
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(perl("$API::refused = ''; 1"), "1");
}

TEST(VelLoad, FileOrTypeMissing)
{
    EXPECT_STREQ(velparser::loadVELFromFile(nullptr, "vel"), "Invalid file or file type");
    EXPECT_STREQ(velparser::loadVELFromFile("x", nullptr), "Invalid file or file type");
}

TEST(VelLoad, TypeUnknown)
{
    for (const char *type : {"VEL", "", "vel ", "ve", "Def"}) {
        EXPECT_STREQ(velparser::loadVELFromFile("x", type),
                     "fileType is invalid (it should be vel, def or res)")
            << type;
    }
}

TEST(VelLoad, TextFile)
{
    EXPECT_STREQ(velparser::loadVELFromFile("a file.vel", "vel"), nullptr);
    EXPECT_EQ(parsed(), "from a file.vel|second");
    // The integer 0, not a text.
    EXPECT_EQ(perl("require B; B::svref_2object(\\$API::argument)->FLAGS & B::SVf_IOK() ? "
                   "$API::argument : 'no integer'"),
              "0");
}

TEST(VelLoad, TextFileThatCannotBeReadOrParsed)
{
    failIn("read");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), "cannot read x");
    failIn("parse");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), "cannot parse");
    failIn("");
}

TEST(VelLoad, ArraysGoWhenTheyHaveServed)
{
    const std::array lines{"A = 1"};
    ASSERT_EQ(perl("@API::arrays = (); 1"), "1");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), nullptr);
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 1), nullptr);
    failIn("parse");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), "cannot parse");
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 1), "cannot parse");
    failIn("read");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), "cannot read x");
    failIn("try");
    EXPECT_STREQ(velparser::loadVELFromFile("x", "vel"), "cannot even try\n");
    failIn("");
    EXPECT_EQ(perl("@API::arrays . ' made, ' . grep({ defined } @API::arrays) . ' left'"),
              "8 made, 0 left");
}

TEST(VelLoad, ALineThatIsMissingIsUndefined)
{
    const std::array<const char *, 2> lines{"A = 1", nullptr};
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 2), nullptr);
    EXPECT_EQ(perl("@API::parsed . (defined $API::parsed[1] ? ' defined' : ' undefined')"),
              "2 undefined");
    EXPECT_STREQ(velparser::loadVELData(lines.data(), -1), nullptr);
    EXPECT_EQ(parsed(), "");
}

TEST(VelLoad, LinesOfTheCallersAsTheyAre)
{
    const std::array lines{"A = 1", "", "B = 2\n", "not counted"};
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 3), nullptr);
    EXPECT_EQ(parsed(), "A = 1||B = 2\n");
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 0), nullptr);
    EXPECT_EQ(parsed(), "");
    EXPECT_STREQ(velparser::loadVELData(nullptr, 0), "loadVELData : Invalid arguments");
    failIn("parse");
    EXPECT_STREQ(velparser::loadVELData(lines.data(), 1), "cannot parse");
    failIn("");
}

TEST(VelLoad, Libraries)
{
    EXPECT_STREQ(velparser::readVELLibraries(), nullptr);
    failIn("parse");
    EXPECT_STREQ(velparser::readVELLibraries(), "parse");
    failIn("");
}

TEST(VelLoad, AnObjectThatCannotBeToldFindsTheLibrariesInTheEnvironment)
{
    ASSERT_EQ(perl("@former = delete @ENV{@API::variables}; 1"), "1");
    velparser::Session session({.libraries = velparser::LibraryNames{"here", "a.vel;b.vel"}});
    EXPECT_STREQ(velparser::readVELLibraries(session), nullptr);
    EXPECT_EQ(perl("$API::named"), "here|a.vel;b.vel");
    std::vector<velparser::Finding> faults;
    EXPECT_STREQ(velparser::readLibraries(session, &faults), nullptr);
    EXPECT_EQ(perl("$API::named"), "here|a.vel;b.vel");
    EXPECT_STREQ(velparser::readVELLibraries(), nullptr);
    EXPECT_EQ(perl("$API::named"), "-|-");
    // A class with useLibraries gets the names as arguments, and finds nothing in %ENV.
    ASSERT_EQ(perl("*API::useLibraries = sub { $given = qq{@_[1, 2]}; return }; 1"), "1");
    velparser::Session other({.libraries = velparser::LibraryNames{"there", "c.vel"}});
    EXPECT_STREQ(velparser::readVELLibraries(other), nullptr);
    EXPECT_EQ(perl("delete $API::{useLibraries}; qq{$given $API::named}"), "c.vel there -|-");
    perl("defined $former[$_] and $ENV{$API::variables[$_]} = $former[$_] for 0, 1");
}

} // namespace
