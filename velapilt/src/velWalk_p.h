// Two ways to walk the tree, without recursion, because the depth of a file has no limit.
//
// velWalk follows the links of the nodes and needs no memory; the tree must not change
// meanwhile. velListWalk keeps lists of children, made when their parent is entered. It is
// for another order of the children, and for trees that handlers may change meanwhile.
#pragma once

#include "velapilt/src/velNode_p.h"

#include <cstddef>
#include <vector>

/// Everything below a node in stored order, each node before its children, and
/// the end of each block after them. `Node` is velNode or const velNode.
///
///     for (velWalk walk(top); !walk.isDone();)
///         …walk.node(), then one of down(), over() and up()…
template <typename Node>
class velWalk
{
public:
    /// `top` is not itself visited.
    explicit velWalk(Node *top) : top_(top), parent_(top), node_(top->firstChild()) {}

    /// Whether everything has been visited.
    [[nodiscard]] bool isDone() const { return node_ == nullptr && parent_ == top_; }
    /// The current node; null at the end of a block.
    [[nodiscard]] Node *node() const { return node_; }
    /// The node whose block the walk is in.
    [[nodiscard]] Node *parent() const { return parent_; }

    /// Goes below the node, which may have no children but is not a Parameter.
    void down()
    {
        parent_ = node_;
        node_ = node_->children.first;
    }
    /// Goes on to the node's sibling.
    void over() { node_ = node_->next; }
    /// At the end of a block: goes on to what comes after it.
    void up()
    {
        node_ = parent_->next;
        parent_ = parent_->parent;
    }

private:
    Node *top_; // not owned, like the others
    Node *parent_;
    Node *node_;
};

/// Calls `visit` with every node below `top`, as velWalk does; its result says
/// whether to go below that node.
template <typename Node, typename Visit>
void velVisitBelow(Node *top, Visit visit)
{
    for (velWalk walk(top); !walk.isDone();) {
        Node *node = walk.node();
        if (node == nullptr) {
            walk.up();
        } else if (visit(node) && !node->isParam()) {
            walk.down();
        } else {
            walk.over();
        }
    }
}

/// The nodes that are still to be visited, level by level from the top down. A node that is
/// removed meanwhile stays in the list, so the caller must check each node again.
template <typename Node>
class velListWalk
{
public:
    /// Opens a level below the deepest one, for children of `parent`. Throws
    /// bad_alloc.
    void enter(Node *parent) { levels_.push_back({parent, nodes_.size(), nodes_.size()}); }
    /// Adds a node to the deepest level, none of whose nodes has been visited yet. Throws
    /// bad_alloc.
    void add(Node *node) { nodes_.push_back(node); }

    /// The number of open levels; 0 at first and at the end.
    [[nodiscard]] std::size_t depth() const { return levels_.size(); }
    /// The next node of the deepest level; null if all were visited.
    [[nodiscard]] Node *next()
    {
        std::size_t &place = levels_.back().next;
        return place < nodes_.size() ? nodes_[place++] : nullptr;
    }
    /// Closes the deepest level and returns its parent.
    Node *leave()
    {
        const Level level = levels_.back();
        nodes_.resize(level.start);
        levels_.pop_back();
        return level.parent;
    }

private:
    struct Level
    {
        Node *parent;      // not owned
        std::size_t start; // of its nodes in the common list
        std::size_t next;  // the one whose turn it is
    };

    std::vector<Level> levels_;
    std::vector<Node *> nodes_; // not owned; those of the deepest level last
};
