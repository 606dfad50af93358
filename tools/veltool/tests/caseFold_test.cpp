// foldCase: letters of several scripts, and bytes that are not characters.
#include "tools/veltool/support/caseFold.h"

#include <gtest/gtest.h>

namespace veltool {
namespace {

TEST(FoldCase, KnowsEveryScript)
{
    EXPECT_EQ(foldCase("Mass FLOW 1"), "mass flow 1");
    EXPECT_EQ(foldCase("M\xC3\x9CHLE \xCE\xA9"), "m\xC3\xBChle \xCF\x89");
}

TEST(FoldCase, DoesNotChangeOtherBytes)
{
    EXPECT_EQ(foldCase("A\xFF\xC3"), "a\xFF\xC3");
    EXPECT_EQ(foldCase("\xE4 B"), "\xE4 b");
}

} // namespace
} // namespace veltool
