// Tests child lists, groups and searches.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *flow = "FLOW:\n"
                             "BOUNDARY: in\n"
                             "END\n"
                             "BOUNDARY: out\n"
                             "BOUNDARY: sub\n"
                             "END\n"
                             "END\n"
                             "Option = x\n"
                             "END\n";

/// One line "name class type" per child.
std::string childList(const velHandlePtr &handle, const char *path)
{
    std::vector<velChildInfo> children;
    if (const char *error = getChildList(handle.get(), path, &children, nullptr)) {
        return error;
    }
    std::string text;
    for (const velChildInfo &child : children) {
        text += child.name + " " + child.className + " " + child.type + "\n";
    }
    return text;
}

/// One line "class/type: indices" per group.
std::string groupList(const velHandlePtr &handle, const char *path)
{
    std::vector<velGroupInfo> groups;
    if (const char *error = getChildList(handle.get(), path, nullptr, &groups)) {
        return error;
    }
    std::string text;
    for (const velGroupInfo &group : groups) {
        text += std::string(group.className) + "/" + group.type + ":";
        for (const std::int32_t index : group.indices) {
            text += " " + std::to_string(index);
        }
        text += "\n";
    }
    return text;
}

std::string objectList(const velHandlePtr &handle, const char *path, bool objects, bool params)
{
    velStringList list;
    const char *error = getChildObjectList(handle.get(), path, objects, params, &list);
    return error == nullptr ? asLines(list) : error;
}

std::string byName(const velHandlePtr &handle, const char *path, const char *name,
                   std::uint32_t include = 0, std::uint32_t exclude = 0)
{
    velStringList list;
    const char *error = getObjectsByNameH(handle.get(), path, name, include, exclude, &list);
    return error == nullptr ? asLines(list) : error;
}

std::string byType(const velHandlePtr &handle, const char *path, const char *type,
                   std::uint32_t include = 0, std::uint32_t exclude = 0)
{
    velStringList list;
    const char *error = getObjectsByTypeH(handle.get(), path, type, include, exclude, &list);
    return error == nullptr ? asLines(list) : error;
}

TEST(VelChildren, ChildrenInStoredOrder)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(childList(handle, "/"), "FLOW Singleton FLOW\n");
    EXPECT_EQ(childList(handle, "/FLOW"), "in Object BOUNDARY\n"
                                          "out Object BOUNDARY\n"
                                          "Option Param String\n");
    EXPECT_EQ(childList(handle, "/FLOW/BOUNDARY:in"), "");
    EXPECT_EQ(childList(handle, "/FLOW/Option"), "");
    EXPECT_EQ(childList(handle, "/NONE"), "getChildList: unable to find the requested path");
}

TEST(VelChildren, GroupsAreInReverseOrder)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(groupList(handle, "/FLOW"), "Parameter/String: 2\n"
                                          "Object/BOUNDARY: 1 0\n");
    EXPECT_EQ(groupList(handle, "/FLOW/BOUNDARY:in"), "");
    EXPECT_EQ(groupList(handle, "/NONE"), "getChildList: unable to find the requested path");
}

TEST(VelChildren, OneGroupForEachKindAndType)
{
    const velHandlePtr handle = parsed("A: x\nEND\n"
                                       "p = 1\n"
                                       "A:\nEND\n"
                                       "B: x\nEND\n"
                                       "A: y\nEND\n"
                                       "String: s\nEND\n"
                                       "q = 2\n");
    EXPECT_EQ(groupList(handle, "/"), "Object/String: 5\n"
                                      "Object/B: 3\n"
                                      "Singleton/A: 2\n"
                                      "Parameter/String: 6 1\n"
                                      "Object/A: 4 0\n");
}

TEST(VelChildren, EitherBothListsOrNone)
{
    const velHandlePtr handle = parsed(flow);
    std::vector<velChildInfo> children;
    std::vector<velGroupInfo> groups;
    EXPECT_EQ(said(getChildList(handle.get(), "FLOW", &children, &groups)), "");
    EXPECT_EQ(children.size(), 3U);
    EXPECT_EQ(groups.size(), 2U);
    EXPECT_EQ(said(getChildList(handle.get(), "FLOW", nullptr, nullptr)), "");
    EXPECT_EQ(said(getChildList(handle.get(), "NONE", nullptr, nullptr)),
              "getChildList: unable to find the requested path");
    EXPECT_EQ(said(getChildList(handle.get(), "NONE", &children, &groups)),
              "getChildList: unable to find the requested path");
    EXPECT_EQ(children.size(), 3U); // output arguments are written on success only
    EXPECT_EQ(said(getChildList(handle.get(), "FLOW/BOUNDARY:in", &children, &groups)), "");
    EXPECT_TRUE(children.empty());
    EXPECT_TRUE(groups.empty());
}

TEST(VelChildren, ManyGroups)
{
    std::string text;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        text += "T" + std::to_string(i % 250) + ": n" + std::to_string(i) + "\nEND\n";
    }
    for (int i = 249; i >= 0; --i) {
        expected += "Object/T" + std::to_string(i) + ": " + std::to_string(i + 250) + " " +
                    std::to_string(i) + "\n";
    }
    EXPECT_EQ(groupList(parsed(text), "/"), expected);
}

// --- Plain lists -------------------------------------------------------------------------

TEST(VelChildren, ObjectsAndParameters)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(objectList(handle, "/FLOW", true, false), "BOUNDARY:in\nBOUNDARY:out\n");
    EXPECT_EQ(objectList(handle, "/FLOW", false, true), "Option\n");
    EXPECT_EQ(objectList(handle, "/FLOW", true, true), "BOUNDARY:in\nBOUNDARY:out\nOption\n");
    EXPECT_EQ(objectList(handle, "/FLOW", false, false), "");
    EXPECT_EQ(objectList(handle, "/", true, true), "FLOW\n");
    EXPECT_EQ(objectList(handle, " FLOW / NONE ", true, true),
              "getChildObjectList: path \"/FLOW/NONE\" does not exist");
}

TEST(VelChildren, TheShortForms)
{
    const velHandlePtr handle = parsed(flow);
    velStringList list;
    EXPECT_EQ(said(getChildObjectList(handle.get(), "/FLOW", &list)), "");
    EXPECT_EQ(asLines(list), "BOUNDARY:in\nBOUNDARY:out\n");
    EXPECT_EQ(list.data()[2], nullptr); // the null end
    EXPECT_EQ(said(getChildParamList(handle.get(), "/FLOW", &list)), "");
    EXPECT_EQ(asLines(list), "Option\n");
    EXPECT_EQ(said(getChildParamList(handle.get(), "/NONE", &list)),
              "getChildObjectList: path \"/NONE\" does not exist");
    EXPECT_EQ(asLines(list), "Option\n");
}

TEST(VelChildren, AnEmptyResultGivesNoList)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nB: b\nEND\nEND\n");
    velStringList list;
    EXPECT_EQ(said(getChildParamList(handle.get(), "/A", &list)), "");
    EXPECT_NE(list.data(), nullptr);
    EXPECT_EQ(said(getChildParamList(handle.get(), "/A/B:b", &list)), "");
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(said(getChildObjectList(handle.get(), "/A/x", &list)), "");
    EXPECT_EQ(list.data(), nullptr);
}

TEST(VelChildren, BeforeThereIsATree)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(childList(handle, "/"), "getChildList: unable to find the requested path");
    EXPECT_EQ(objectList(handle, "/", true, true), "getChildObjectList: path \"/\" does not exist");
    EXPECT_EQ(byName(handle, "/", "x"), "getPartialVELH: object does not exist");
}

// --- Searches ----------------------------------------------------------------------------

constexpr const char *searched = "A: x\n"
                                 "A: y\n"
                                 "A:\n"
                                 "B: x\n"
                                 "END\n"
                                 "END\n"
                                 "END\n"
                                 "x = A\n"
                                 "END\n"
                                 "x:\n"
                                 "B: A\n"
                                 "END\n"
                                 "END\n"
                                 "A: x2\n"
                                 "END\n";

TEST(VelChildren, ByTypeParentsBeforeTheirDescendants)
{
    const velHandlePtr handle = parsed(searched);
    EXPECT_EQ(byType(handle, "/", "A"), "/A:x\n"
                                        "/A:x/A:y\n"
                                        "/A:x/A:y/A\n"
                                        "/A:x2\n");
    EXPECT_EQ(byType(handle, "/", "B"), "/A:x/A:y/A/B:x\n/x/B:A\n");
    EXPECT_EQ(byType(handle, "/A:x", "A"), "/A:x/A:y\n/A:x/A:y/A\n"); // not the node itself
    EXPECT_EQ(byType(handle, "/", "a"), "");
    EXPECT_EQ(byType(handle, "/", "String"), ""); // parameters are ignored
    EXPECT_EQ(byType(handle, "/", "/"), "");      // and so is the root
    EXPECT_EQ(byType(handle, "/", ""), "");
    EXPECT_EQ(byType(handle, "/A:x/x", "A"), "");
    EXPECT_EQ(byType(handle, "/NONE", "A"), "getPartialVELH: object does not exist");
}

TEST(VelChildren, ByNameASingletonByItsType)
{
    const velHandlePtr handle = parsed(searched);
    EXPECT_EQ(byName(handle, "/", "x"), "/A:x\n/A:x/A:y/A/B:x\n/x\n");
    EXPECT_EQ(byName(handle, "/", "A"), "/A:x/A:y/A\n/x/B:A\n");
    EXPECT_EQ(byName(handle, "A:x", "y"), "/A:x/A:y\n");
    EXPECT_EQ(byName(handle, "/", "never seen"), "");
    EXPECT_EQ(byName(handle, "/", ""), "");
    EXPECT_EQ(byName(handle, "/NONE", "x"), "getPartialVELH: object does not exist");
}

TEST(VelChildren, AnEmptySearchGivesOnlyTheNullEnd)
{
    const velHandlePtr handle = parsed(searched);
    velStringList list;
    EXPECT_EQ(said(getObjectsByTypeH(handle.get(), "/", "NONE", 0, 0, &list)), "");
    EXPECT_EQ(list.size(), 0U);
    ASSERT_NE(list.data(), nullptr);
    EXPECT_EQ(list.data()[0], nullptr);
}

TEST(VelChildren, MasksExcludeWholeSubtrees)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "A: lib\nA: inner\nEND\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(parse(handle, "A: user\nA: inner\nEND\nEND\n"), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A:lib/A:mine", false)), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A:user/A:theirs", true)), "");
    EXPECT_EQ(byType(handle, "/", "A"), "/A:lib\n/A:lib/A:inner\n/A:lib/A:mine\n"
                                        "/A:user\n/A:user/A:inner\n/A:user/A:theirs\n");
    EXPECT_EQ(byType(handle, "/", "A", 0, velFlagLibrary), "/A:user\n/A:user/A:inner\n");
    EXPECT_EQ(byType(handle, "/", "A", velFlagLibrary, 0), "/A:lib\n/A:lib/A:inner\n");
    EXPECT_EQ(byType(handle, "/", "A", velFlagLibrary, velFlagLibrary), "");
    EXPECT_EQ(byType(handle, "/A:lib", "A", 0, velFlagLibrary), "/A:lib/A:mine\n");
    EXPECT_EQ(byName(handle, "/", "inner", 0, velFlagLibrary), "/A:user/A:inner\n");
}

} // namespace
