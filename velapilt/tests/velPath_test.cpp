// Tests paths as texts: normal form, absolute path and parent path.
#include "velapilt/src/velPath.h"

#include "velapilt/src/velapilt.h"
#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

struct Case
{
    const char *given;
    const char *expected;
};

bool isRunCharacter(char c)
{
    return c == ' ' || c == '\t' || c == '/' || c == ':';
}

std::string reduced(const std::string &component)
{
    const std::size_t colon = component.find(':');
    const bool isTwice =
        colon != std::string::npos && component.substr(0, colon) == component.substr(colon + 1);
    return isTwice ? component.substr(0, colon) : component;
}

/// The normal form by its rules, which delete one character at a time.
std::string plainNormalForm(std::string path)
{
    constexpr const char *space = " \t\n\v\f\r";
    path.erase(0, path.find_first_not_of(space));
    path.erase(path.find_last_not_of(space) + 1);
    if (path.size() < 2) {
        return path;
    }
    path += '/';
    // NOLINTBEGIN(bugprone-branch-clone): one branch per rule, in their order
    for (std::size_t i = 0; i < path.size();) {
        const char next = i + 1 < path.size() ? path[i + 1] : '\0';
        if (path[i] == '\t') {
            path[i] = ' ';
        } else if (path[i] == '/' && isRunCharacter(next)) {
            path.erase(i + 1, 1);
        } else if (path[i] == ':' && next == '/') {
            path.erase(i, 1);
        } else if (path[i] == ':' && isRunCharacter(next)) {
            path.erase(i + 1, 1);
        } else if (path[i] == ' ' && isRunCharacter(next)) {
            path.erase(i, 1);
        } else {
            ++i;
        }
    }
    // NOLINTEND(bugprone-branch-clone)
    std::string result;
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t slash = path.find('/', start);
        result += reduced(path.substr(start, slash - start)) + '/';
        start = slash + 1;
    }
    if (result.size() > 1) {
        result.pop_back();
    }
    return result;
}

TEST(VelPath, NormalForm)
{
    const Case cases[] = {
        {"", ""},
        {" ", ""},
        {"/", "/"},
        {" / ", "/"},
        {":", ":"},
        {" a ", "a"},
        {"::", "/"}, // the appended '/' is the stronger one
        {"//", "/"},
        {"/A", "/A"},
        {"/A/", "/A"},
        {"/A//B", "/A/B"},
        {"/FLOW / DOMAIN : Fluid  Domain//Option", "/FLOW/DOMAIN:Fluid Domain/Option"},
        {"\t/A\t:\tb \t c\t", "/A:b c"},
        {"/A::b", "/A:b"},
        {"/A:/b", "/A/b"},
        {"/A/:b", "/A/b"},
        {"/A: :b", "/A:b"},
        {"/SOLVER:SOLVER", "/SOLVER"},
        {"/SOLVER:SOLVER/SOLVER : SOLVER/x", "/SOLVER/SOLVER/x"},
        {"/A:B:A:B", "/A:B:A:B"}, // split at the first ':'
        {"/A:A:A", "/A:A:A"},
        {"/a:A", "/a:A"}, // case matters
        {"A:A", "A"},
        {"/A\nB", "/A\nB"}, // inside, only spaces and tabs count
        {"\n/A\r\v\f", "/A"},
        {"/\xC3\xA4 /b", "/\xC3\xA4/b"},
        {"/A/./B", "/A/./B"}, // resolving handles this, not cleaning
        {"/A/../B", "/A/../B"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(velCleanPath(c.given), c.expected) << testing::PrintToString(c.given);
        EXPECT_EQ(velNormalForm(c.given), c.expected) << testing::PrintToString(c.given);
        EXPECT_EQ(plainNormalForm(c.given), c.expected) << testing::PrintToString(c.given);
    }
}

TEST(VelPath, NormalFormByItsRules)
{
    for (unsigned seed = 0; seed < 30; ++seed) {
        Random random(seed);
        for (int i = 0; i < 3000; ++i) {
            const std::string path = random.text(random.below(14), "AB/: \t\n");
            const std::string plain = plainNormalForm(path);
            ASSERT_EQ(velCleanPath(path.c_str()), plain) << testing::PrintToString(path);
            ASSERT_EQ(velIsCleanPath(path.c_str()), path == plain) << testing::PrintToString(path);
        }
    }
}

TEST(VelPath, ANormalFormDoesNotChangeAgain)
{
    Random random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string once = velCleanPath(random.text(random.below(20), "AB/: \t").c_str());
        ASSERT_EQ(velCleanPath(once.c_str()), once);
    }
}

TEST(VelPath, TheLastComponentMayBeKept)
{
    EXPECT_EQ(velNormalForm("/A:A/B:B", velLastComponent::Keep), "/A/B:B");
    EXPECT_EQ(velNormalForm("/A:A/B : B/", velLastComponent::Keep), "/A/B:B");
    EXPECT_EQ(velNormalForm("B:B", velLastComponent::Keep), "B:B");
}

TEST(VelPath, AbsolutePaths)
{
    struct
    {
        const char *current;
        const char *given;
        const char *expected;
    } const cases[] = {
        {"/", "A", "/A"},
        {"/FLOW", "DOMAIN:Fluid", "/FLOW/DOMAIN:Fluid"},
        {"/FLOW", "../X", "/X"},
        {"/FLOW", "", "/FLOW"},
        {"/FLOW", ".", "/FLOW"},
        {"/FLOW", "./x", "/FLOW/x"},
        {"/FLOW", ".\\x", "/FLOW/x"},
        {"/FLOW", "./", "/FLOW"},
        {"/", "", "/"},
        {"/", ".", "/"},
        {"/FLOW", "/x", "/x"},
        {"/FLOW", " x", "/FLOW/ x"}, // the normal form removes the space
        {"/FLOW", "..", ""},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(velAbsolutePath(c.current, c.given), c.expected) << c.given;
    }
}

TEST(VelPath, Parents)
{
    const Case cases[] = {
        {"/A/B/../C", "/A/C"},
        {"/A/B/C/../../D", "/A/D"},
        {"/A/B/..", "/A"},
        {"/A/..", ""}, // no node has the empty path
        {"/..", "/"},  // no component before it: only the ".." goes
        {"/../A", "//A"},
        {"/A/...", "."},
        {"/A/..B", "B"}, // other characters may follow
        {"/A/B..", "/A/B.."},
        {"/A/B../C", "/A/B../C"},
        {"/A/..\\B", "/A/..\\B"}, // but not a '\'
        {"/A\\..", ""},           // which counts as a separator before the ".."
        {"/A\\B/..", "/A"},       // and at the start of the component before it
        {"/A//..", "/A"},         // an empty component goes with its separator
        {"/A/B//../C", "/A/B/C"},
        {"/A/.", "/A/."},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(velAbsolutePath("/X", c.given), c.expected) << c.given;
    }
}

TEST(VelPath, FullPathsStartAtTheCurrentPath)
{
    const velHandlePtr handle = parsed("FLOW:\n"
                                       "DOMAIN: Fluid\n"
                                       "END\n"
                                       "END\n");
    EXPECT_EQ(velFullPath(handle.get(), "FLOW"), "/FLOW");
    EXPECT_EQ(said(changePath(handle.get(), "/FLOW")), "");
    EXPECT_EQ(velFullPath(handle.get(), "DOMAIN:Fluid"), "/FLOW/DOMAIN:Fluid");
    EXPECT_EQ(velFullPath(handle.get(), " DOMAIN : Fluid / x "), "/FLOW/DOMAIN:Fluid/x");
    EXPECT_EQ(velFullPath(handle.get(), "../X"), "/X");
    EXPECT_EQ(velFullPath(handle.get(), ".."), "");
    EXPECT_EQ(velFullPath(handle.get(), "FLOW:FLOW"), "/FLOW/FLOW");
    EXPECT_EQ(velFullPath(handle.get(), "/"), "/");
}

TEST(VelPath, ParentPaths)
{
    const velHandlePtr handle = parsed("FLOW:\nEND\n");
    EXPECT_EQ(velParentPath(handle.get(), "/A/B/C"), "/A/B");
    EXPECT_EQ(velParentPath(handle.get(), "/A"), "/");
    EXPECT_EQ(velParentPath(handle.get(), "/"), "/");
    EXPECT_EQ(velParentPath(handle.get(), "x"), "/");
    EXPECT_EQ(velParentPath(handle.get(), "/A/.."), std::nullopt);
    EXPECT_EQ(said(pushPath(handle.get(), "/FLOW")), "");
    EXPECT_EQ(velParentPath(handle.get(), "x"), "/FLOW");
    EXPECT_EQ(velParentPath(handle.get(), ""), "/");
}

TEST(VelPath, ChildPaths)
{
    const auto child = [](const char *parent, const char *component) {
        std::string path;
        EXPECT_EQ(said(makeChildPath(parent, component, &path)), "");
        return path;
    };
    EXPECT_EQ(child("/", "FLOW"), "/FLOW");
    EXPECT_EQ(child("/FLOW", "DOMAIN:Fluid"), "/FLOW/DOMAIN:Fluid");
    EXPECT_EQ(child("/FLOW/DOMAIN:Fluid", "Option"), "/FLOW/DOMAIN:Fluid/Option");
}

} // namespace
