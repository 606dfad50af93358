// Tests the parts of paths: parent, last component, child.
#include "velapilt/src/velPathParts.h"

#include <gtest/gtest.h>

namespace {

TEST(PathParts, TheParentOfAPath)
{
    EXPECT_EQ(velPathOfParent("/FLOW/DOMAIN:Duct/Kind"), "/FLOW/DOMAIN:Duct");
    EXPECT_EQ(velPathOfParent("/FLOW"), "/");
    EXPECT_EQ(velPathOfParent("/"), "/");
}

TEST(PathParts, TheLastComponent)
{
    EXPECT_EQ(velLastOfPath("/FLOW/DOMAIN:Duct"), "DOMAIN:Duct");
    EXPECT_EQ(velLastOfPath("/FLOW"), "FLOW");
    EXPECT_EQ(velLastOfPath("/"), "");
}

TEST(PathParts, ThePathOfAChild)
{
    EXPECT_EQ(velPathOfChild("/FLOW", "DOMAIN:Duct"), "/FLOW/DOMAIN:Duct");
    EXPECT_EQ(velPathOfChild("/", "FLOW"), "/FLOW");
}

} // namespace
