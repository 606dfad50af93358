// Tests the current path and the stack of paths.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *flow = "FLOW:\n"
                             "DOMAIN: Fluid\n"
                             "Option = x\n"
                             "END\n"
                             "END\n"
                             "SOLVER:\n"
                             "END\n";

std::string current(const velHandlePtr &handle)
{
    return getCurrentPath(handle.get());
}

TEST(VelPathStack, TheBottomIsTheRootAndStays)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(current(handle), "/");
    EXPECT_EQ(said(popPath(handle.get())), "");
    EXPECT_EQ(said(popPath(handle.get())), "");
    EXPECT_EQ(current(handle), "/");
}

TEST(VelPathStack, BeforeThereIsATreeNoPathIsFound)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(said(pushPath(handle.get(), "/")), "pushPath: path is not found");
    EXPECT_EQ(said(changePath(handle.get(), "/")), "changePath: path is not found");
    EXPECT_EQ(said(popPath(handle.get())), "");
}

TEST(VelPathStack, PushAndPop)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(pushPath(handle.get(), "FLOW")), "");
    EXPECT_EQ(current(handle), "/FLOW");
    EXPECT_EQ(said(pushPath(handle.get(), " DOMAIN : Fluid ")), "");
    EXPECT_EQ(current(handle), "/FLOW/DOMAIN:Fluid");
    EXPECT_EQ(said(pushPath(handle.get(), "..")), "");
    EXPECT_EQ(current(handle), "/FLOW");
    EXPECT_EQ(said(pushPath(handle.get(), "/SOLVER:SOLVER")), "");
    EXPECT_EQ(current(handle), "/SOLVER");
    for (const char *expected : {"/FLOW", "/FLOW/DOMAIN:Fluid", "/FLOW", "/", "/"}) {
        EXPECT_EQ(said(popPath(handle.get())), "");
        EXPECT_EQ(current(handle), expected);
    }
}

TEST(VelPathStack, AParameterMayBeCurrent)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(pushPath(handle.get(), "/FLOW/DOMAIN:Fluid/Option")), "");
    EXPECT_EQ(current(handle), "/FLOW/DOMAIN:Fluid/Option");
    // A parameter has no children.
    EXPECT_EQ(said(parseVELLineH(handle.get(), "x = 1", 0)),
              "parseVELLineH: velUpdateObject failed");
    EXPECT_EQ(said(velCreateParam(handle.get(), "x", "1")),
              "velCreateParam: unable to create param");
    EXPECT_EQ(said(velCreateObject(handle.get(), "X", false)),
              "velCreateObject: unable to create object");
    EXPECT_EQ(current(handle), "/FLOW/DOMAIN:Fluid/Option");
}

TEST(VelPathStack, PathsThatPushRefuses)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(pushPath(handle.get(), nullptr)), "pushPath: path provided is non-existent");
    EXPECT_EQ(said(pushPath(handle.get(), "/FLOW/DOMAIN")), "pushPath: path is not found");
    EXPECT_EQ(said(pushPath(handle.get(), "/FLOW/..")), "pushPath: path is not found"); // ""
    EXPECT_EQ(current(handle), "/");
    EXPECT_EQ(said(changePath(handle.get(), nullptr)), "changePath: path provided is non-existent");
    EXPECT_EQ(said(changePath(handle.get(), "/FLO")), "changePath: path is not found");
    EXPECT_EQ(current(handle), "/");
}

TEST(VelPathStack, ChangeReplacesTheTopEvenIfItIsTheBottom)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(changePath(handle.get(), "FLOW")), "");
    EXPECT_EQ(current(handle), "/FLOW");
    EXPECT_EQ(said(popPath(handle.get())), ""); // the only entry stays
    EXPECT_EQ(current(handle), "/FLOW");
    EXPECT_EQ(said(pushPath(handle.get(), "DOMAIN:Fluid")), "");
    EXPECT_EQ(said(changePath(handle.get(), "/SOLVER")), "");
    EXPECT_EQ(current(handle), "/SOLVER");
    EXPECT_EQ(said(popPath(handle.get())), "");
    EXPECT_EQ(current(handle), "/FLOW");
    velCleanPathStack(handle.get());
    EXPECT_EQ(current(handle), "/");
}

TEST(VelPathStack, UncheckedPathsAreUsedUnchanged)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(velPushPath(handle.get(), "/no/such path//")), "");
    EXPECT_EQ(current(handle), "/no/such path//");
    EXPECT_EQ(said(velChangePath(handle.get(), "/FLOW")), "");
    EXPECT_EQ(current(handle), "/FLOW");
    EXPECT_EQ(havePath(handle.get(), "DOMAIN:Fluid"), 1);
    EXPECT_EQ(said(popPath(handle.get())), "");
    EXPECT_EQ(current(handle), "/");
    EXPECT_EQ(said(velChangePath(handle.get(), getCurrentPath(handle.get()))), "");
    EXPECT_EQ(current(handle), "/");
}

TEST(VelPathStack, ParsingContinuesAtTheCurrentPath)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(changePath(handle.get(), "/FLOW/DOMAIN:Fluid")), "");
    EXPECT_EQ(parse(handle, "A: b\nx = 1\nEND\ny = 2\n"), "");
    EXPECT_EQ(current(handle), "/FLOW/DOMAIN:Fluid");
    EXPECT_EQ(stored(handle, "/FLOW/DOMAIN:Fluid"), "DOMAIN: Fluid\n"
                                                    "Option = x\n"
                                                    "A: b\n"
                                                    "  x = 1\n"
                                                    "END\n"
                                                    "y = 2\n"
                                                    "END\n");
}

TEST(VelPathStack, APathStaysCurrentWithoutItsNode)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(said(pushPath(handle.get(), "/FLOW/DOMAIN:Fluid")), "");
    EXPECT_EQ(said(deleteObjH(handle.get(), "/FLOW")), "");
    EXPECT_EQ(current(handle), "/FLOW/DOMAIN:Fluid");
    EXPECT_EQ(havePath(handle.get(), "."), 0);
    EXPECT_EQ(velFullPath(handle.get(), "../x"), "/FLOW/x");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "x = 1", 0)),
              "parseVELLineH: velUpdateObject failed");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "X:", 0)), "parseVELLineH: velUpdateObject failed");
    EXPECT_EQ(said(changePath(handle.get(), ".")), "changePath: path is not found");
    EXPECT_EQ(stored(handle), "SOLVER:\nEND\n");

    // An entry of the stack is a path: a new node at the path is current again.
    EXPECT_EQ(said(velCreateObject(handle.get(), "/FLOW", false)), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/FLOW/DOMAIN:Fluid", false)), "");
    EXPECT_EQ(current(handle), "/FLOW/DOMAIN:Fluid");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "x = 1", 0)), "");
    EXPECT_EQ(valueAt(handle, "/FLOW/DOMAIN:Fluid/x"), "1");
}

TEST(VelPathStack, DeepStacks)
{
    const velHandlePtr handle = parsed(flow);
    for (int i = 0; i < 100000; ++i) {
        ASSERT_EQ(said(pushPath(handle.get(), i % 2 == 0 ? "/FLOW" : "/SOLVER")), "");
    }
    EXPECT_EQ(said(deleteObjH(handle.get(), "/SOLVER")), "");
    EXPECT_EQ(current(handle), "/SOLVER");
    EXPECT_EQ(said(popPath(handle.get())), "");
    EXPECT_EQ(current(handle), "/FLOW");
}

} // namespace
