// Findings, changes and fields across the bridge: from Perl code that gives records,
// and from Perl code that gives only texts.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velapilt/src/velapilt.h"
#include "velparser/api/textRecords_p.h"
#include "velparser/api/velValidate_p.h"
#include "velparser/api/velparser.h"

namespace {

using velparser::ChangeKind;
using velparser::Finding;
using velparser::RuleField;
using velparser::UpgradeChange;

/// Gives the records that a test sets; its texts only say that texts were requested.
const char fakeApi[] = R"perl(
package API;
use strict;
use VEL::Parser::Lite;
our (@records, $message, @asked);
sub new {
    my $database = VEL::Parser::Lite::NEW();
    $database->loadVELData([ 'FLOW:', 'A [1] = 1', 'END' ]);
    return our $object = bless { database => $database }, shift;
}
sub readLibraries { return "/RULES/A: text [bad-rule]\nfailed\n" }
sub updateSolverVEL { return "/A: renamed to B\n/C: changed [1]" }
sub explainItem { @{ $_[2] } = ('A = B = C', 'D', ''); return }
sub give {
    my $records = pop;
    shift;
    @asked = @_;
    @$records = @records;
    return $message;
}
sub readLibrariesRecords { goto &give }
sub updateSolverVELRecords { goto &give }
sub explainItemRecords { goto &give }

package TextsOnly;
our @ISA = 'API';
sub readLibraries { return $API::message }
sub updateSolverVEL { return $API::message }
sub explainItem { @{ $_[2] } = @API::records; return $API::message }

package Tied;
sub TIEHASH { return bless {} }
sub FETCH { my ($self, $key) = @_; die "no $key\n" if $key eq 'text'; return "tied $key" }
sub EXISTS { return 1 }

package Leaving;
use overload '""' => sub { CORE::exit(7) };
1;
)perl";

const char fakeValidator[] = R"perl(
package VEL::Validate;
use strict;
sub new { my ($class, $database) = @_; return bless { database => $database }, $main::validator // $class }
sub validateObject { return "$_[1]: a text [as-text]" }
sub validateParam { return "$_[1]: a text [as-text]" }
sub validateObjectRecords {
    my ($self, $path, $findings) = @_;
    push @API::asked, $path;
    die "why\nnot\n" if $path eq '/' && $API::message;
    @$findings = grep { ref && $_->{path} =~ m{^\Q$path\E(?:/[^/]*)?\z} } @API::records;
    @$findings = @API::records if $path eq '/FLOW' && !@$findings;
    return;
}
sub validateParamRecords { goto &API::give }

package Derived;
our @ISA = 'VEL::Validate';
sub validateObject { return $_[1] eq '/' ? undef : "$_[1]: mine [of-mine]\nno path [x]\n/A: unit [1]" }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}, {"VEL/Validate.pm", fakeValidator}});

class VelRecords : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_STREQ(velparser::startVELParser(), nullptr);
        ASSERT_NE(velparser::findLiteHandle(), nullptr);
        ASSERT_EQ(perl("require VEL::Validate; 1"), "1");
        give("");
    }

    /// Sets the records, and the message that comes with them.
    static void give(const std::string &records, const std::string &message = "undef")
    {
        ASSERT_EQ(perl("@API::records = (" + records + "); $API::message = " + message +
                       "; @API::asked = (); 1"),
                  "1");
    }
};

/// Gives the default instance's object another class, until it is destroyed.
class AsClass
{
public:
    explicit AsClass(const std::string &name) { set(name); }
    ~AsClass() { set("API"); }
    AsClass(const AsClass &) = delete;
    AsClass &operator=(const AsClass &) = delete;

private:
    static void set(const std::string &name)
    {
        EXPECT_EQ(perl("bless $API::object, '" + name + "'; 1"), "1");
    }
};

std::vector<Finding> validated(const char *path = "/")
{
    std::vector<Finding> findings;
    EXPECT_STREQ(velparser::validate(path, &findings), nullptr);
    return findings;
}

Finding failure(const std::string &text)
{
    return {.path = {}, .identifier = {}, .text = text};
}

// --- Records as they are ------------------------------------------------------------

TEST_F(VelRecords, FindingsAreWhatTheValidatorGives)
{
    give("{ path => '/FLOW/A [1]', identifier => 'wrong-type', text => qq{\"a\\nb\" [m] = \"c\"},"
         "  related => ['/FLOW/B', '/FLOW/C [bad-rule]'] },"
         "{ path => '/FLOW', identifier => '', text => 'renamed to \"x\"' }");
    const std::vector<Finding> findings = validated();
    EXPECT_EQ(findings, (std::vector<Finding>{
                            {.path = "/FLOW/A [1]",
                             .identifier = "wrong-type",
                             .text = "\"a\nb\" [m] = \"c\"",
                             .related = {"/FLOW/B", "/FLOW/C [bad-rule]"}},
                            {.path = "/FLOW", .identifier = "", .text = "renamed to \"x\""}}));
    EXPECT_EQ(lineOf(findings[0]), "/FLOW/A [1]: \"a\nb\" [m] = \"c\" [wrong-type]");
    EXPECT_EQ(lineOf(findings[1]), "/FLOW: renamed to \"x\"");
    EXPECT_EQ(lineOf(failure("it failed")), "it failed");
    EXPECT_EQ(perl("\"@API::asked\""), "/ /FLOW");
}

TEST_F(VelRecords, FindingsOfOneParameter)
{
    give("{ path => '/FLOW/A [1]', identifier => 'x', text => 'y' }");
    std::vector<Finding> findings;
    EXPECT_STREQ(velparser::validateParameter("/FLOW/A [1]", &findings), nullptr);
    EXPECT_EQ(findings, (std::vector<Finding>{{"/FLOW/A [1]", "x", "y"}}));
    EXPECT_EQ(perl("\"@API::asked\""), "/FLOW/A [1]");
    give("");
    EXPECT_STREQ(velparser::validateParameter("/FLOW/A [1]", &findings), nullptr);
    EXPECT_EQ(findings, std::vector<Finding>());
    EXPECT_STREQ(velparser::validateParameter(nullptr, &findings),
                 "validateParameter : Invalid arguments");
}

TEST_F(VelRecords, ChangesAreWhatTheUpgradeGives)
{
    give("{ kind => 'rename-parameter', path => '/A/B', new_path => '/A/renamed to \"C\"',"
         "  text => 'other words' },"
         "{ kind => 'change-value', path => '/A/C', old => qq{\"1\\n\"}, new => '', text => 't' },"
         "(map { { kind => $_ } } qw(remove-parameter add-parameter move-parameter rename-object "
         "remove-object set-version what-else))");
    std::vector<UpgradeChange> changes;
    ASSERT_STREQ(velparser::upgrade(&changes), nullptr);
    ASSERT_EQ(changes.size(), 9U);
    EXPECT_EQ(changes[0], (UpgradeChange{.kind = ChangeKind::RenamedParameter,
                                         .path = "/A/B",
                                         .newPath = "/A/renamed to \"C\"",
                                         .oldValue = {},
                                         .newValue = {},
                                         .text = "other words"}));
    EXPECT_EQ(lineOf(changes[0]), "/A/B: other words");
    EXPECT_EQ(changes[1].oldValue, "\"1\n\"");
    std::vector<ChangeKind> kinds;
    for (const UpgradeChange &change : changes) {
        kinds.push_back(change.kind);
    }
    EXPECT_EQ(kinds, (std::vector<ChangeKind>{
                         ChangeKind::RenamedParameter, ChangeKind::ChangedValue,
                         ChangeKind::RemovedParameter, ChangeKind::AddedParameter,
                         ChangeKind::MovedParameter, ChangeKind::RenamedObject,
                         ChangeKind::RemovedObject, ChangeKind::SetVersion, ChangeKind::Unknown}));
    give("{}", "'it failed'");
    EXPECT_STREQ(velparser::upgrade(&changes), "it failed");
    EXPECT_EQ(changes.size(), 9U);
    EXPECT_STREQ(velparser::upgrade(nullptr), "upgrade: invalid arguments");
}

TEST_F(VelRecords, FieldsAreWhatTheRulesGive)
{
    give("{ name => 'A = B', text => 'C = D' }, { name => 'E', text => undef, tip => 1 }");
    std::vector<RuleField> fields;
    EXPECT_STREQ(velparser::explainItem("/A = B", &fields), nullptr);
    EXPECT_EQ(fields, (std::vector<RuleField>{{"A = B", "C = D", false}, {"E", "", true}}));
    EXPECT_EQ(perl("\"@API::asked\""), "/A = B");
}

// A library that cannot be read does not hide what is wrong with the others.
TEST_F(VelRecords, FaultsComeWithTheMessage)
{
    give("{ path => '/RULES/A', identifier => 'bad-rule', text => 'x' }", "'no file'");
    std::vector<Finding> faults = {failure("of before")};
    EXPECT_STREQ(velparser::readLibraries(&faults), "no file");
    EXPECT_EQ(faults, (std::vector<Finding>{{"/RULES/A", "bad-rule", "x"}}));
    give("");
    EXPECT_STREQ(velparser::readLibraries(&faults), nullptr);
    EXPECT_EQ(faults, std::vector<Finding>());
}

// --- Perl code that fails -------------------------------------------------------------

TEST_F(VelRecords, WhatFailsOnTheWayIsAmongTheFindings)
{
    give("{ path => '/FLOW', identifier => 'x', text => 'y' }", "1");
    EXPECT_EQ(validated(), (std::vector<Finding>{
                               failure("validateVELDataLTH: Internal error calling "
                                       "validateObject: why"),
                               failure("not"),
                               {"/FLOW", "x", "y"},
                           }));
}

TEST_F(VelRecords, RecordsThatCannotBeRead)
{
    give("{ path => '/FLOW', identifier => 'x', text => 'y' }, 'a text'");
    std::vector<RuleField> fields = {{"kept", ""}};
    const std::string message = shown(velparser::explainItem("/A", &fields));
    EXPECT_EQ(message.rfind("a record is not a hash", 0), 0U) << message;
    EXPECT_EQ(fields, (std::vector<RuleField>{{"kept", ""}}));

    give("do { tie my %hash, 'Tied'; \\%hash }");
    EXPECT_STREQ(velparser::explainItem("/A", &fields), "no text\n");
    give("{ name => bless([], 'Leaving') }");
    EXPECT_STREQ(velparser::explainItem("/A", &fields), "exit(7) called");
    give("{ path => bless([], 'Leaving') }");
    EXPECT_EQ(validated("/FLOW"),
              (std::vector<Finding>{failure("validateVELDataLTH: Internal error calling "
                                            "validateObject: exit(7) called")}));
}

TEST_F(VelRecords, EntriesThatAreMissingOrOfAnotherSort)
{
    give("{ path => '/FLOW', related => 'no array' },"
         "{ path => '/FLOW', text => 2, related => [undef, 3] }");
    EXPECT_EQ(validated(),
              (std::vector<Finding>{
                  {"/FLOW", "", ""},
                  {.path = "/FLOW", .identifier = "", .text = "2", .related = {"", "3"}},
              }));
}

TEST_F(VelRecords, PathsAndArguments)
{
    std::vector<Finding> findings = {failure("kept")};
    EXPECT_STREQ(velparser::validate("/NONE", &findings), "validateVELData: path does not exist\n");
    EXPECT_STREQ(velparser::validate(nullptr, &findings), "validate: invalid arguments");
    EXPECT_STREQ(velparser::validate("/", nullptr), "validate: invalid arguments");
    EXPECT_EQ(findings, (std::vector<Finding>{failure("kept")}));
    EXPECT_STREQ(velparser::readLibraries(nullptr), "readLibraries: invalid arguments");
}

// --- Perl code that gives texts ----------------------------------------------------------

TEST_F(VelRecords, AClassWithTextsOfItsOwnIsAskedForThem)
{
    const AsClass textsOnly("TextsOnly");
    give("", R"("/RULES/A: x [bad-rule]\nnot read")");
    std::vector<Finding> faults;
    EXPECT_STREQ(velparser::readLibraries(&faults), "not read");
    EXPECT_EQ(faults, (std::vector<Finding>{{"/RULES/A", "bad-rule", "x"}}));
    give("", R"("/RULES/A: x [bad-rule]\n")");
    EXPECT_STREQ(velparser::readLibraries(&faults), nullptr);
    EXPECT_EQ(faults.size(), 1U);
    give("", R"("not read\n")");
    EXPECT_STREQ(velparser::readLibraries(&faults), "not read\n");
    EXPECT_EQ(faults.size(), 0U);

    std::vector<UpgradeChange> changes;
    give("", R"("/A: renamed to B\n/C [1]: changed [1]")");
    EXPECT_STREQ(velparser::upgrade(&changes), nullptr);
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].kind, ChangeKind::Unknown);
    EXPECT_EQ(changes[0].newPath, "");
    EXPECT_EQ(lineOf(changes[0]), "/A: renamed to B");
    EXPECT_EQ(lineOf(changes[1]), "/C [1]: changed [1]");
    give("", R"("/A: renamed to B\nfailed\nat line 2")");
    EXPECT_STREQ(velparser::upgrade(&changes), "failed");
    EXPECT_EQ(changes.size(), 2U);
    give("");
    EXPECT_STREQ(velparser::upgrade(&changes), nullptr);
    EXPECT_EQ(changes.size(), 0U);

    std::vector<RuleField> fields;
    give("'A = B = C', 'D', ''");
    EXPECT_STREQ(velparser::explainItem("/A", &fields), nullptr);
    EXPECT_EQ(fields, (std::vector<RuleField>{{"A", "B = C"}, {"D", ""}, {"", ""}}));
    give("'A = B'", "'no rules'");
    EXPECT_STREQ(velparser::explainItem("/A", &fields), "no rules");
    EXPECT_EQ(fields.size(), 3U);
}

TEST_F(VelRecords, ASubroutinePutInItsPlaceIsAskedForTexts)
{
    give("{ name => 'A', text => 'B' }");
    ASSERT_EQ(perl("no warnings; our $kept = \\&API::explainItem;"
                   "*API::explainItem = sub { @{ $_[2] } = 'C = D'; return }; 1"),
              "1");
    std::vector<RuleField> fields;
    EXPECT_STREQ(velparser::explainItem("/A", &fields), nullptr);
    EXPECT_EQ(fields, (std::vector<RuleField>{{"C", "D"}}));
    ASSERT_EQ(perl("no warnings; our $kept; *API::explainItem = $kept; 1"), "1");
    EXPECT_STREQ(velparser::explainItem("/A", &fields), nullptr);
    EXPECT_EQ(fields, (std::vector<RuleField>{{"A", "B"}}));
}

TEST_F(VelRecords, FindingsOfADerivedValidatorAreItsTexts)
{
    const velHandlePtr data(velCreateHandle());
    ASSERT_STREQ(parseVELLineH(data.get(), "FLOW:", 0), nullptr);
    ASSERT_EQ(perl("$main::validator = 'Derived'; 1"), "1");
    std::vector<Finding> findings;
    EXPECT_STREQ(velparser::validateVELData(data.get(), "/", &findings), nullptr);
    ASSERT_EQ(perl("$main::validator = undef; 1"), "1");
    EXPECT_EQ(findings, (std::vector<Finding>{
                            {"/FLOW", "of-mine", "mine"},
                            {"", "x", "no path"},
                            {"/A", "", "unit [1]"},
                        }));
}

TEST(TextRecords, LinesByTheirForm)
{
    using velparser::findingFromLine;
    EXPECT_EQ(findingFromLine("/A/B [1]: c: d [e-f]"), (Finding{"/A/B [1]", "e-f", "c: d"}));
    EXPECT_EQ(findingFromLine("/A: give it in [Pa]"), (Finding{"/A", "", "give it in [Pa]"}));
    EXPECT_EQ(findingFromLine("/A: [x]"), (Finding{"/A", "", "[x]"}));
    EXPECT_EQ(findingFromLine("/A:b [x]"), (Finding{"", "x", "/A:b"}));
    EXPECT_EQ(findingFromLine("a: b [1]"), failure("a: b [1]"));
    EXPECT_EQ(findingFromLine(""), failure(""));
    EXPECT_EQ(velparser::findingsFromText("a\n\nb\n").size(), 3U);
    EXPECT_EQ(velparser::findingsFromText("").size(), 0U);
}

} // namespace
