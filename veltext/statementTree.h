// Which statements of a text state which path.
//
// The tree has a node for each path of the text: an object is stated by its
// headers, a parameter by its assignments. Statements that a later &replace block
// makes void are still in the tree, so look up only paths that the database has.
#pragma once

#include "veltext/statement.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace veltext {

/// Nodes and statements, by number. It keeps line numbers and no part of the text.
class StatementTree
{
public:
    using Index = std::uint32_t; ///< of a node or of a statement
    /// No node, or no statement.
    static constexpr Index none = static_cast<Index>(-1);
    /// The node of the top level, which has no statement.
    static constexpr Index root = 0;

    /// A header or an assignment.
    struct Stated
    {
        LineRange lines;
        Index node;
        Index previous;             ///< the statement before it of the same node, or none
        Index block;                ///< the header of the block around it, or none
        LineRange end{};            ///< of a header: its END
        Index lastParameter = none; ///< the last assignment directly in its block
        Index lastObject = none;    ///< the last header directly in its block
    };

    /// A path that the text states.
    struct Node
    {
        Index parent;
        Index last; ///< its last statement, or none
        std::string component;
    };

    /// Reads the whole text and does not keep it. Throws bad_alloc.
    explicit StatementTree(const SourceText &source);
    StatementTree(StatementTree &&) = default;
    StatementTree &operator=(StatementTree &&) = default;

    /// The node at a full path in normal form; none if no statement states it.
    [[nodiscard]] Index find(std::string_view path) const;
    /// The same, or the nearest node above it.
    [[nodiscard]] Index findNearest(std::string_view path) const;
    /// The child of a node; none if no statement states it.
    [[nodiscard]] Index findChild(Index parent, std::string_view component) const;

    /// `index` must not be none.
    [[nodiscard]] const Node &node(Index index) const { return nodes_[index]; }
    /// `index` must not be none.
    [[nodiscard]] const Stated &statement(Index index) const { return statements_[index]; }

    /// The last statement of the node at the path; null if there is none.
    [[nodiscard]] const Stated *lastOf(std::string_view path) const;

    /// The first line, counted from 1, of the last statement of the path, or of
    /// the nearest object above it; 0 if there is none.
    [[nodiscard]] std::size_t lineOf(std::string_view path) const;

    /// The last statement directly at the top level, or none.
    [[nodiscard]] Index lastTopLevel() const { return lastTopLevel_; }

    /// The first line of an unfinished statement at the end of the text; the
    /// number of lines if there is none.
    [[nodiscard]] std::size_t unfinishedLine() const { return unfinishedLine_; }

    /// Gives a node another component; its children stay below it. A sibling that
    /// already has this component can no longer be found.
    void rename(Index index, const std::string &component);

private:
    friend class StatementReader;

    struct Key
    {
        Index parent;
        std::string_view component; ///< that of the node
        bool operator==(const Key &) const = default;
    };
    struct KeyHash
    {
        std::size_t operator()(const Key &key) const
        {
            return std::hash<std::string_view>()(key.component) * 31 + key.parent;
        }
    };

    Index findOrMake(Index parent, const std::string &component);

    std::vector<Stated> statements_;
    std::deque<Node> nodes_; ///< a deque does not move them; the keys point into them
    std::unordered_map<Key, Index, KeyHash> children_;
    Index lastTopLevel_ = none;
    std::size_t unfinishedLine_ = 0;
};

} // namespace veltext
