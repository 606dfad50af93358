// Tests the walks of the tree: the nodes they visit and their order, as lines; empty
// trees, trees of very many levels, and nodes removed during the walk.
#include "velapilt/src/velWalk_p.h"

#include "velapilt/src/velHandle_p.h"
#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const char twoBlocks[] = "a = 1\n"
                         "FLOW:\n"
                         "b = 2\n"
                         "DOMAIN: d\n"
                         "c = 3\n"
                         "END\n"
                         "DOMAIN: empty\n"
                         "END\n"
                         "e = 4\n"
                         "END\n"
                         "LAST:\n"
                         "END\n";

/// The component of a node, by which its parent distinguishes it.
std::string called(const velHandlePtr &handle, const velNode *node)
{
    const std::string_view type = handle->words.view(node->type);
    const std::string_view name = handle->words.view(node->name);
    return std::string(type) + (type.empty() || name.empty() ? "" : ":") + std::string(name);
}

/// The steps of velWalk below a node: "+ X" for down, "- X" for the end of X, "X"
/// for over. The walk goes over the nodes for which `isOver` is true.
template <typename IsOver>
std::string walked(const velHandlePtr &handle, const velNode *top, IsOver isOver)
{
    std::string text;
    for (velWalk walk(top); !walk.isDone();) {
        const velNode *node = walk.node();
        if (node == nullptr) {
            text += "- " + called(handle, walk.parent()) + "\n";
            walk.up();
        } else if (isOver(node)) {
            text += called(handle, node) + "\n";
            walk.over();
        } else {
            text += "+ " + called(handle, node) + "\n";
            walk.down();
        }
    }
    return text;
}

bool isParam(const velNode *node)
{
    return node->isParam();
}

/// A chain of objects, each with the next one as its only child. The nodes are made
/// directly, because the paths of so many levels would need gigabytes.
std::vector<velNode> chain(std::size_t levels)
{
    std::vector<velNode> nodes(levels);
    for (std::size_t i = 0; i < levels; ++i) {
        nodes[i].type = velWords::slash;
        if (i > 0) {
            nodes[i].parent = &nodes[i - 1];
            nodes[i - 1].children.first = nodes[i - 1].children.last = &nodes[i];
        }
    }
    return nodes;
}

// --- velWalk --------------------------------------------------------------------

TEST(VelWalk, AnEmptyTreeIsDoneAtOnce)
{
    const velHandlePtr handle = parsed("");
    EXPECT_EQ(walked(handle, handle->root, isParam), "");
    velVisitBelow(handle->root, [](const velNode *) -> bool { throw "visited"; });
}

TEST(VelWalk, ParentsComeBeforeTheirChildrenAndEndAfterThem)
{
    const velHandlePtr handle = parsed(twoBlocks);
    EXPECT_EQ(walked(handle, handle->root, isParam), "a\n"
                                                     "+ FLOW\n"
                                                     "b\n"
                                                     "+ DOMAIN:d\n"
                                                     "c\n"
                                                     "- DOMAIN:d\n"
                                                     "+ DOMAIN:empty\n"
                                                     "- DOMAIN:empty\n"
                                                     "e\n"
                                                     "- FLOW\n"
                                                     "+ LAST\n"
                                                     "- LAST\n");
}

TEST(VelWalk, NothingIsVisitedOutsideTheTop)
{
    const velHandlePtr handle = parsed(twoBlocks);
    EXPECT_EQ(walked(handle, handle->table.find("/FLOW/DOMAIN:d"), isParam), "c\n");
    EXPECT_EQ(walked(handle, handle->table.find("/FLOW/DOMAIN:empty"), isParam), "");
    EXPECT_EQ(walked(handle, handle->table.find("/FLOW/b"), isParam), "");
}

TEST(VelWalk, ANodeThatIsGoneOverIsLeftOutWithItsSubtree)
{
    const velHandlePtr handle = parsed(twoBlocks);
    EXPECT_EQ(walked(handle, handle->root, [](const velNode *) { return true; }),
              "a\nFLOW\nLAST\n");
}

TEST(VelWalk, TheVisitorDecidesWhereTheWalkGoesDown)
{
    const velHandlePtr handle = parsed(twoBlocks);
    std::string all;
    velVisitBelow(handle->root, [&](const velNode *node) {
        all += called(handle, node) + "\n";
        return true;
    });
    EXPECT_EQ(all, "a\nFLOW\nb\nDOMAIN:d\nc\nDOMAIN:empty\ne\nLAST\n");
    std::string some;
    velVisitBelow(handle->root, [&](const velNode *node) {
        some += called(handle, node) + "\n";
        return called(handle, node) != "DOMAIN:d";
    });
    EXPECT_EQ(some, "a\nFLOW\nb\nDOMAIN:d\nDOMAIN:empty\ne\nLAST\n");
}

TEST(VelWalk, AHundredThousandLevels)
{
    constexpr std::size_t levels = 100000;
    std::vector<velNode> nodes = chain(levels);
    std::size_t visited = 0;
    velVisitBelow(nodes.data(), [&](const velNode *node) {
        EXPECT_EQ(node, &nodes[++visited]);
        return true;
    });
    EXPECT_EQ(visited, levels - 1);
}

// --- velListWalk ------------------------------------------------------------------

/// Visits all nodes below a node with lists. `visit` is called with each node
/// first; after the call, the children of the node are listed.
template <typename Visit>
void walkLists(velNode *top, Visit visit)
{
    velListWalk<velNode> walk;
    const auto enter = [&walk](velNode *node) {
        walk.enter(node);
        for (velNode *child = node->firstChild(); child != nullptr; child = child->next) {
            walk.add(child);
        }
    };
    enter(top);
    while (walk.depth() > 0) {
        if (velNode *node = walk.next()) {
            visit(node);
            enter(node);
        } else {
            walk.leave();
        }
    }
}

TEST(VelListWalk, AnEmptyTreeHasOneLevel)
{
    const velHandlePtr handle = parsed("");
    velListWalk<velNode> walk;
    EXPECT_EQ(walk.depth(), 0U);
    walk.enter(handle->root);
    EXPECT_EQ(walk.depth(), 1U);
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(walk.leave(), handle->root);
    EXPECT_EQ(walk.depth(), 0U);
}

TEST(VelListWalk, ALevelContinuesWhereItWasLeft)
{
    std::vector<velNode> nodes(5);
    velListWalk<velNode> walk;
    walk.enter(&nodes[0]);
    walk.add(&nodes[1]);
    walk.add(&nodes[2]);
    EXPECT_EQ(walk.next(), &nodes[1]);
    walk.enter(&nodes[1]);
    walk.add(&nodes[3]);
    walk.add(&nodes[4]);
    EXPECT_EQ(walk.next(), &nodes[3]);
    EXPECT_EQ(walk.depth(), 2U);
    EXPECT_EQ(walk.leave(), &nodes[1]); // before its last node
    EXPECT_EQ(walk.next(), &nodes[2]);
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(walk.leave(), &nodes[0]);
}

TEST(VelListWalk, AHundredThousandLevels)
{
    constexpr std::size_t levels = 100000;
    std::vector<velNode> nodes = chain(levels);
    std::size_t visited = 0;
    walkLists(nodes.data(), [&](const velNode *node) { EXPECT_EQ(node, &nodes[++visited]); });
    EXPECT_EQ(visited, levels - 1);
}

TEST(VelListWalk, AListedNodeIsVisitedEvenIfItIsUnlinked)
{
    const velHandlePtr handle = parsed(twoBlocks);
    std::string visited;
    walkLists(handle->root, [&](velNode *node) {
        visited += called(handle, node) + "\n";
        if (called(handle, node) == "FLOW") { // listed with LAST, but its children are not yet
            handle->root->children.first->next = nullptr;
            node->children.first->next = nullptr;
        }
    });
    EXPECT_EQ(visited, "a\nFLOW\nb\nLAST\n");
}

} // namespace
