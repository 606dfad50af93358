// Tests which characters words and values may contain. It calls the checks directly,
// because lines and paths give some characters a special meaning.
#include "velapilt/src/velCheck_p.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

class VelCheck : public testing::Test
{
protected:
    velHandlePtr handle_{velCreateHandle()};
};

TEST_F(VelCheck, EmptyWords)
{
    EXPECT_EQ(said(velCheckType(handle_.get(), "")), "invalid object type: must be non-empty.");
    EXPECT_EQ(said(velCheckParamName(handle_.get(), "")),
              "invalid parameter name: must be non-empty.");
    // The rule for types and names refuses it first.
    EXPECT_EQ(said(velCheckObjectName(handle_.get(), "")),
              "invalid object name \"\": leading character must be alphabetic or '_'");
}

TEST_F(VelCheck, ATabMayNotBeTheFirstCharacter)
{
    EXPECT_EQ(said(velCheckType(handle_.get(), "A\tb")), "");
    EXPECT_EQ(said(velCheckObjectName(handle_.get(), "\tb")),
              "invalid object name \"\tb\": leading character must be alphabetic or '_'");
}

TEST_F(VelCheck, AWordMayNotContainANul)
{
    const std::string_view word("a\0b", 3);
    EXPECT_STREQ(velCheckParamName(handle_.get(), word),
                 "invalid parameter name \"a\": contains invalid character '");
}

} // namespace
