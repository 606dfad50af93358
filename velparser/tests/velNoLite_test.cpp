// Tests an interpreter in which VEL::Parser::Lite was never loaded.
#include "velparser/tests/fakeParser.h"

#include "velparser/api/velparser.h"

#include <gtest/gtest.h>

namespace {

const FakeParser parser({{"API.pm", R"perl(
package API;
our $database = bless {}, 'Other';
sub new { return bless { database => $database }, shift }
1;
)perl"}});

TEST(VelNoLite, AnObjectOfAnotherClassIsNotADatabase)
{
    ASSERT_STREQ(velparser::startVELParser(), nullptr);
    ASSERT_EQ(perl("exists $INC{'VEL/Parser/Lite.pm'} ? 'loaded' : 'not loaded'"), "not loaded");
    EXPECT_EQ(velparser::findLiteHandle(), nullptr);
    EXPECT_STREQ(velparser::setStringValue("/A", "1"),
                 "setStringValue: error finding Lite API handle");
}

TEST(VelNoLite, OnlyTheLoadersAreRegistered)
{
    EXPECT_EQ(perl("no strict 'refs'; join ' ', grep { defined &{\"VEL::Parser::Lite::$_\"} } "
                   "sort keys %VEL::Parser::Lite::"),
              "bootstrap");
    EXPECT_EQ(perl("defined &DynaLoader::boot_DynaLoader"), "1");
}

TEST(VelNoLite, AnObjectThatTakesTheNameIsNotADatabase)
{
    EXPECT_EQ(perl("$API::database = bless \\(my $x = 1), 'VEL::Parser::Lite'; 1"), "1");
    EXPECT_EQ(velparser::findLiteHandle(), nullptr);
}

} // namespace
