// The editor's questions, before and after the Perl object exists.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velapilt/src/velapilt.h"
#include "velparser/api/velparser.h"

#include <array>
#include <string>

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use Scalar::Util ();
use VEL::Parser::Lite;
our ($refused, $object, @asked, @arrays) = ('not yet');
sub watch { push @arrays, $_[0]; Scalar::Util::weaken($arrays[-1]) }
sub new {
    die "$refused\n" if $refused;
    return $object = bless { database => VEL::Parser::Lite::NEW() }, shift;
}
sub readLibraries {
    return $_[0]{database}->loadVELData([
        'FLOW:', ' A = 1', ' EMPTY =', ' DOMAIN: in', '  B = 2', ' END', ' DOMAIN: out', ' END',
        'END' ]) || $_[0]{database}->loadLibraryData([ 'RULES:', 'END' ]);
}
sub updateSolverVEL { return @_ == 1 ? "updated\n" : 'too many arguments' }
sub isParamEditable { return $_[1] eq '/text' ? '1' : $_[1] eq '/dies' ? die : $_[1] eq '/yes' ? 1 : 0 }
sub isItemExpert { return length $_[1] }
sub getAllowedParamStrings {
    my ($self, $path, $list) = @_;
    watch($list);
    return "no values for $path" if $path eq '/none';
    @$list = $path eq '/empty' ? () : ('Yes', 2, undef, "\x{20ac}");
    tie $list->[0], 'Tied', $path if $path =~ /^.tied/;
    return;
}
sub explainItem {
    my ($self, $path, $list) = @_;
    return "no rules for $path" if $path eq '/none';
    @$list = ("Description = $path", 'Type = Real');
    return '';
}
sub getAllowedParams {
    my ($self, $path, $list, $flag) = @_;
    watch($list);
    @asked = map { ref ? 'array' : $_ } @_[1 .. $#_];
    return 'no names' if $path eq '/none';
    @$list = $path eq '/empty' ? () : ('A', "flag $flag");
    return '';
}

package Tied;
sub TIESCALAR { my ($class, $path) = @_; return bless \$path }
sub FETCH { my $self = shift; die "no value\n" if $$self eq '/tied/dies'; return 'fetched' }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}});

std::string listed(const velStringList &list)
{
    std::string text;
    for (const char *item : list) {
        text += std::string(item) + '|';
    }
    return text;
}

TEST(VelQuery, DirectCallsWithoutADatabase)
{
    std::optional<std::string> value;
    velStringList lines;
    EXPECT_STREQ(velparser::getStringValue("/A", &value),
                 "getStringValue: error finding Lite API handle");
    EXPECT_STREQ(velparser::setStringValue("/A", "1"),
                 "setStringValue: error finding Lite API handle");
    EXPECT_STREQ(velparser::getFormattedVEL("/", 79, &lines),
                 "getFormattedVEL: error finding Lite API handle");
    EXPECT_STREQ(velparser::pushPathH("/"), "pushPathH: error finding Lite API handle");
    EXPECT_STREQ(velparser::popPathH(), "popPathH: error finding Lite API handle");
    EXPECT_STREQ(velparser::deleteParam("/A"), "deleteParam: error finding Lite API handle");
    EXPECT_STREQ(velparser::deleteObj("/A"), "deleteObj: error finding Lite API handle");
    EXPECT_STREQ(velparser::createObject("/A"), "createObject: error finding Lite API handle");
    EXPECT_STREQ(velparser::createParam("/A", "1"), "createParam: error finding Lite API handle");
    EXPECT_STREQ(velparser::placeChild("/A", 0), "placeChild: error finding Lite API handle");
    EXPECT_STREQ(velparser::getChildList("/", nullptr, nullptr),
                 "getChildList: error finding Lite API handle");
    EXPECT_STREQ(velparser::setValidationLevelH(2),
                 "setValidationLevelH: error finding Lite API handle");
    EXPECT_EQ(velparser::isVELLibrary("/"), -1);
    EXPECT_EQ(velparser::findLiteHandle(), nullptr);
}

TEST(VelQuery, MethodsWithoutAnObject)
{
    velStringList list;
    EXPECT_STREQ(velparser::updateSolverVEL(), "Invalid (uninitialized) instance handle");
    EXPECT_STREQ(velparser::getAllowedParamStrings("/A", &list),
                 "Invalid (uninitialized) instance handle");
    EXPECT_STREQ(velparser::getAllowedParams("/A", nullptr, 0),
                 "Invalid (uninitialized) instance handle");
    testing::internal::CaptureStderr();
    EXPECT_EQ(velparser::isParamEditable("/A"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "VEL API error: Invalid (uninitialized) instance handle\n");
}

class VelQueryReady : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(perl("$API::refused = ''; 1"), "1");
        ASSERT_STREQ(velparser::readVELLibraries(), nullptr);
    }

    void TearDown() override
    {
        EXPECT_EQ(perl("$API::object->{database}->clearChangeHandlers;"
                       "$API::object->{database}->deleteObj('/') // ''"),
                  "");
    }
};

TEST_F(VelQueryReady, Values)
{
    std::optional<std::string> value = "before";
    EXPECT_STREQ(velparser::getStringValue("/FLOW/A", &value), nullptr);
    EXPECT_EQ(value, "1");
    EXPECT_STREQ(velparser::getStringValue("/FLOW/X", &value),
                 "getStringValue: value \"/FLOW/X\" does not exist");
    EXPECT_EQ(value, "1");
    EXPECT_STREQ(velparser::getStringValue("/FLOW", &value), nullptr);
    EXPECT_EQ(value, std::nullopt);
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", "new"), nullptr);
    EXPECT_STREQ(velparser::getStringValue("/FLOW/A", &value), nullptr);
    EXPECT_EQ(value, "new");
    EXPECT_STREQ(velparser::deleteParam("/FLOW/A"), nullptr);
    EXPECT_STREQ(velparser::deleteParam("/FLOW/A"), "deleteParamH: unable to find parameter");
}

TEST_F(VelQueryReady, TextAndChildren)
{
    velStringList lines;
    EXPECT_STREQ(velparser::getFormattedVEL("/FLOW/DOMAIN:in", 79, &lines), nullptr);
    EXPECT_EQ(listed(lines), "B = 2|");
    std::vector<velChildInfo> children;
    std::vector<velGroupInfo> groups;
    EXPECT_STREQ(velparser::getChildList("/FLOW", &children, &groups), nullptr);
    EXPECT_EQ(children.size(), 4u);
    EXPECT_EQ(groups.size(), 2u);
    EXPECT_EQ(velparser::isVELLibrary("/RULES"), 1);
    EXPECT_EQ(velparser::isVELLibrary("/FLOW"), 0);
    EXPECT_EQ(velparser::isVELLibrary("/NOWHERE"), -1);
}

TEST_F(VelQueryReady, MakesAndPlacesChildren)
{
    const auto order = [] {
        std::vector<velChildInfo> children;
        EXPECT_STREQ(velparser::getChildList("/FLOW", &children, nullptr), nullptr);
        std::string names;
        for (const velChildInfo &child : children) {
            names += child.name + ' ';
        }
        return names;
    };
    EXPECT_STREQ(velparser::createObject("/FLOW/NEW:it"), nullptr);
    EXPECT_STREQ(velparser::createParam("/FLOW/NEW:it/C", "two  blanks #"), nullptr);
    std::optional<std::string> value;
    EXPECT_STREQ(velparser::getStringValue("/FLOW/NEW:it/C", &value), nullptr);
    EXPECT_EQ(value, "two  blanks #");
    EXPECT_EQ(order(), "A EMPTY in out it ");
    EXPECT_STREQ(velparser::placeChild("/FLOW/NEW:it", 1), nullptr);
    EXPECT_EQ(order(), "A it EMPTY in out ");
    EXPECT_STREQ(velparser::createObject("/NOWHERE/A:b"),
                 "velCreateObject: parent object does not exist");
    EXPECT_STREQ(velparser::createParam("/FLOW/A-b", "1"),
                 "invalid parameter name \"A-b\": contains invalid character '-'");
    EXPECT_STREQ(velparser::placeChild("/NOWHERE", 1), "velPlaceChild: path not found");
}

TEST_F(VelQueryReady, CurrentPath)
{
    std::optional<std::string> value;
    EXPECT_STREQ(velparser::pushPathH("/FLOW/DOMAIN:in"), nullptr);
    EXPECT_STREQ(velparser::getStringValue("B", &value), nullptr);
    EXPECT_EQ(value, "2");
    EXPECT_STREQ(velparser::popPathH(), nullptr);
    EXPECT_STREQ(velparser::pushPathH("/NOWHERE"), "pushPath: path is not found");
}

TEST_F(VelQueryReady, WithoutAPath)
{
    std::optional<std::string> value;
    velStringList list;
    EXPECT_STREQ(velparser::getStringValue(nullptr, &value),
                 "getStringValue: value \"\" does not exist");
    EXPECT_STREQ(velparser::setStringValue(nullptr, "1"),
                 "setStringValue: error deriving full pathname");
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", nullptr), nullptr);
    EXPECT_STREQ(velparser::deleteParam(nullptr), "deleteParamH: unable to find parameter");
    EXPECT_STREQ(velparser::deleteObj(nullptr), "deleteObjH: unable to find parameter");
    EXPECT_STREQ(velparser::pushPathH(nullptr), "pushPath: path provided is non-existent");
    EXPECT_STREQ(velparser::getChildList(nullptr, nullptr, nullptr),
                 "getChildList: unable to find the requested path");
    EXPECT_STREQ(velparser::getFormattedVEL(nullptr, 79, &list),
                 "getChildObjectList: path \"\" does not exist");
    EXPECT_EQ(velparser::isVELLibrary(nullptr), -1);
    // The methods are called, and warn about missing arguments.
    testing::internal::CaptureStderr();
    EXPECT_EQ(velparser::isParamEditable(nullptr), 0);
    EXPECT_STREQ(velparser::getAllowedParams(nullptr, &list, 0), nullptr);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(perl("defined $API::asked[0] ? 'a path' : 'undefined'"), "undefined");
}

TEST_F(VelQueryReady, ArraysGoWhenTheyHaveServed)
{
    velStringList list;
    ASSERT_EQ(perl("@API::arrays = (); 1"), "1");
    EXPECT_STREQ(velparser::getAllowedParamStrings("/A", &list), nullptr);
    EXPECT_STREQ(velparser::getAllowedParamStrings("/none", &list), "no values for /none");
    EXPECT_STREQ(velparser::getAllowedParamStrings("/tied/dies", &list), "no value\n");
    EXPECT_STREQ(velparser::getAllowedParams("/A", &list, 0), nullptr);
    EXPECT_STREQ(velparser::getAllowedParams("/none", &list, 0), "no names");
    EXPECT_EQ(perl("@API::arrays . ' made, ' . grep({ defined } @API::arrays) . ' left'"),
              "5 made, 0 left");
}

TEST_F(VelQueryReady, ValidationLevel)
{
    EXPECT_STREQ(velparser::setValidationLevelH(2), nullptr);
    EXPECT_EQ(perl("$API::object->{database}->getValidationLevel"), "2");
}

TEST_F(VelQueryReady, ADyingHandlerIsTheResult)
{
    EXPECT_EQ(perl("$API::object->{database}->addChangeHandler(sub { die \"not $_[2]\\n\" }); 1"),
              "1");
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", "5"), "not 5\n");
    EXPECT_EQ(perl("my $v; $API::object->{database}->getStringValue('/FLOW/A', \\$v); $v"), "5");
    EXPECT_EQ(perl("$API::object->{database}->clearChangeHandlers; 1"), "1");
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", "6"), nullptr);
}

TEST_F(VelQueryReady, Integers)
{
    EXPECT_EQ(velparser::isParamEditable("/yes"), 1);
    EXPECT_EQ(velparser::isParamEditable("/no"), 0);
    EXPECT_EQ(velparser::isParamEditable("/text"), -1);
    EXPECT_EQ(velparser::isParamEditable("/dies"), -1);
    EXPECT_EQ(velparser::isItemExpert("/1234"), 5);
    EXPECT_STREQ(velparser::updateSolverVEL(), "updated\n");
}

TEST_F(VelQueryReady, AllowedTexts)
{
    velStringList list;
    EXPECT_STREQ(velparser::getAllowedParamStrings("/A", &list), nullptr);
    EXPECT_EQ(listed(list), "Yes|2||\xe2\x82\xac|");
    EXPECT_STREQ(velparser::getAllowedParamStrings("/none", &list), "no values for /none");
    EXPECT_EQ(list.size(), 4u);
    EXPECT_STREQ(velparser::getAllowedParamStrings("/empty", &list), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_STREQ(velparser::getAllowedParamStrings("/A", nullptr),
                 "Invalid text array in getAllowedParamStrings\n");
    EXPECT_STREQ(velparser::getAllowedParamStrings(nullptr, &list), "Invalid path in getAnyValue");
}

TEST_F(VelQueryReady, Explanations)
{
    std::vector<velparser::RuleField> fields;
    EXPECT_STREQ(velparser::explainItem("/A", &fields), nullptr);
    EXPECT_EQ(fields, (std::vector<velparser::RuleField>{{"Description", "/A"}, {"Type", "Real"}}));
    EXPECT_STREQ(velparser::explainItem("/none", &fields), "no rules for /none");
    EXPECT_EQ(fields.size(), 2u);
    EXPECT_STREQ(velparser::explainItem("/A", nullptr), "Invalid text array in explainItem\n");
    EXPECT_STREQ(velparser::explainItem(nullptr, &fields), "Invalid path in getAnyValue");
}

TEST_F(VelQueryReady, AllowedTextsThatRunCode)
{
    velStringList list;
    EXPECT_STREQ(velparser::getAllowedParamStrings("/tied", &list), nullptr);
    EXPECT_EQ(listed(list), "fetched|2||\xe2\x82\xac|");
    EXPECT_STREQ(velparser::getAllowedParamStrings("/tied/dies", &list), "no value\n");
    EXPECT_EQ(list.size(), 4u);
}

TEST_F(VelQueryReady, AllowedNames)
{
    velStringList list;
    EXPECT_STREQ(velparser::getAllowedParams("/FLOW", &list, 1), nullptr);
    EXPECT_EQ(listed(list), "A|flag 1|");
    EXPECT_EQ(perl("\"@API::asked[0, 2] \" . @API::asked"), "/FLOW 1 3");
    EXPECT_STREQ(velparser::getAllowedParams("/none", &list, 0), "no names");
    EXPECT_STREQ(velparser::getAllowedParams("/empty", &list, 0), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_STREQ(velparser::getAllowedParams("/FLOW", nullptr, 0),
                 "Invalid text array in getAllowedParams\n");
}

TEST_F(VelQueryReady, AHandlersErrorOfTheRawHandleIsForgotten)
{
    EXPECT_EQ(perl("$API::object->{database}->addChangeHandler(sub { die \"raw\\n\" if ($_[2] // "
                   "q{}) eq 'x' });"
                   "1"),
              "1");
    velHandle *handle = velparser::findLiteHandle();
    ASSERT_STREQ(::setStringValue(handle, "/FLOW/A", "x"), "a handler died");
    EXPECT_EQ(perl("my $v; $API::object->{database}->getStringValue('/FLOW/A', \\$v) // $v"), "x");
    EXPECT_EQ(perl("$API::object->{database}->setStringValue('/FLOW/A', 'y') // 'done'"), "done");
    ASSERT_STREQ(::setStringValue(handle, "/FLOW/A", "x"), "a handler died");
    EXPECT_STREQ(velparser::setStringValue("/FLOW/A", "z"), nullptr);
}

TEST_F(VelQueryReady, DeletingAnObject)
{
    EXPECT_STREQ(velparser::deleteObj("/FLOW/DOMAIN:in"), nullptr);
    EXPECT_STREQ(velparser::deleteObj("/FLOW/DOMAIN:in"), "deleteObjH: unable to find parameter");
    EXPECT_EQ(perl("$API::object->{database}->addChangeHandler(sub { die \"no\\n\" }); 1"), "1");
    EXPECT_STREQ(velparser::deleteObj("/FLOW"), "no\n");
}

} // namespace
