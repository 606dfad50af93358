// Walks through a tree in stored order, without a limit for its depth.
#pragma once

#include "velapilt/src/velapilt.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltext {

/// Visits a node and all nodes below it, parents before their children. The tree
/// must not change during the walk.
///
///     for (TreeWalk walk(handle, node, path); walk.node(); walk.step())
///         …walk.path()…
class TreeWalk
{
public:
    /// `path` is the full path of `start`.
    TreeWalk(const velHandle *handle, const velNode *start, std::string path);

    /// The current node; null after the last one.
    [[nodiscard]] const velNode *node() const { return node_; }
    /// The data of the current node; its texts are valid as long as the tree.
    [[nodiscard]] const velNodeInfo &info() const { return info_; }
    /// The full path of the current node; valid until the next step.
    [[nodiscard]] const std::string &path() const { return path_; }
    /// How many levels the current node is below the start.
    [[nodiscard]] std::size_t depth() const { return open_.size(); }

    /// Goes to the next node: the first child, otherwise the next sibling, otherwise the
    /// next sibling of an object above.
    void step();
    /// Goes to the next node that is not below the current one.
    void skipChildren();

private:
    struct Level
    {
        const velNode *node;
        std::size_t pathLength; ///< of the path of the node; 0 for the root
    };

    void enter(const velNode *node);

    const velHandle *handle_;
    const velNode *node_;
    velNodeInfo info_{};
    std::string path_;
    std::vector<Level> open_; ///< the nodes above, from the start down
};

/// The header or assignment of a node, as a line of VEL text without indent.
[[nodiscard]] std::string statementOf(const velNodeInfo &info);

} // namespace veltext
