// TreeWalk: order, depth and paths of the nodes, also in a very deep tree.
#include "veltext/treeWalk.h"

#include "veltext/error.h"
#include "veltext/sourceText.h"
#include "veltext/tests/newHandle.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

using test::newHandle;

velHandlePtr parsed(const std::string &text)
{
    velHandlePtr handle = newHandle();
    const velStringList lines = SourceText(text).parsedLines().takeStrings();
    require(loadVELData(handle.get(), lines.data(), static_cast<std::int32_t>(lines.size())));
    return handle;
}

std::string walk(velHandle *handle, const char *path, const char *skipped = "")
{
    std::string listing;
    TreeWalk walk(handle, velFindNode(handle, path), path);
    while (walk.node() != nullptr) {
        listing += std::to_string(walk.depth()) + ' ' + walk.path() + " | " +
                   statementOf(walk.info()) + '\n';
        walk.path() == skipped ? walk.skipChildren() : walk.step();
    }
    return listing;
}

const char *const sample = "A:\n x = 1\n B: b\n  y =\n END\n z = 2\nEND\nC: c\nEND\n";

TEST(TreeWalk, VisitsParentsFirstInStoredOrder)
{
    const velHandlePtr handle = parsed(sample);
    EXPECT_EQ(walk(handle.get(), "/"), "0 / | /:\n"
                                       "1 /A | A:\n"
                                       "2 /A/x | x = 1\n"
                                       "2 /A/B:b | B: b\n"
                                       "3 /A/B:b/y | y = \n"
                                       "2 /A/z | z = 2\n"
                                       "1 /C:c | C: c\n");
    EXPECT_EQ(walk(handle.get(), "/A/B:b"), "0 /A/B:b | B: b\n1 /A/B:b/y | y = \n");
    EXPECT_EQ(walk(handle.get(), "/A/x"), "0 /A/x | x = 1\n");
}

TEST(TreeWalk, SkipsChildren)
{
    const velHandlePtr handle = parsed(sample);
    EXPECT_EQ(walk(handle.get(), "/A", "/A/B:b"), "0 /A | A:\n1 /A/x | x = 1\n1 /A/B:b | B: b\n"
                                                  "1 /A/z | z = 2\n");
    EXPECT_EQ(walk(handle.get(), "/", "/"), "0 / | /:\n");
}

TEST(TreeWalk, IsNotLimitedByTheStack)
{
    constexpr std::size_t levels = 20000;
    std::string text;
    for (std::size_t i = 0; i < levels; ++i) {
        text += "A: a\n";
    }
    for (std::size_t i = 0; i < levels; ++i) {
        text += "END\n";
    }
    const velHandlePtr handle = parsed(text);
    TreeWalk walk(handle.get(), velFindNode(handle.get(), "/"), "/");
    std::size_t deepest = 0;
    for (; walk.node() != nullptr; walk.step()) {
        deepest = std::max(deepest, walk.depth());
    }
    EXPECT_EQ(deepest, levels);
}

} // namespace
} // namespace veltext
