// Walking a tree in stored order, however deep it is nested.
#pragma once

#include "velapilt/src/velapilt.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltext {

/// Visits a node and all below it, each with its path, parents before their
/// children. The tree must not change meanwhile.
///
///     for (TreeWalk walk(handle, node, path); walk.node(); walk.step())
///         …walk.path()…
class TreeWalk
{
public:
    /// `path` is the full path of `start`.
    TreeWalk(const velHandle *handle, const velNode *start, std::string path);

    /// Null behind the last node.
    [[nodiscard]] const velNode *node() const { return node_; }
    /// What the node is; its texts live as long as the tree.
    [[nodiscard]] const velNodeInfo &info() const { return info_; }
    /// The full path of the node, until the next step.
    [[nodiscard]] const std::string &path() const { return path_; }
    /// Levels below the start.
    [[nodiscard]] std::size_t depth() const { return open_.size(); }

    /// To the next node: a child, else a sibling, else one further up.
    void step();
    /// As step, leaving out what is below the node.
    void skipChildren();

private:
    struct Level
    {
        const velNode *node;
        std::size_t pathLength; ///< of the node's path, 0 for the root
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
