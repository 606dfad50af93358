// Which statements of a text make what stands in the database.
//
// The tree has a node for every path that some statement of the text states:
// an object by its headers, a parameter by its assignments. What a &replace
// block has swept away is still in it; callers ask for paths that the database
// holds, or for the nearest one above.
#pragma once

#include "veltext/statement.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace veltext {

/// Nodes and statements by number. It keeps lines, and no part of the text.
class StatementTree
{
public:
    using Index = std::uint32_t; ///< of a node or of a statement
    /// No node, or no statement.
    static constexpr Index none = static_cast<Index>(-1);
    /// The node of the top level, which no statement states.
    static constexpr Index root = 0;

    /// A header or an assignment.
    struct Stated
    {
        LineRange lines;
        Index node;
        Index previous;             ///< the one before that states the same node, or none
        Index block;                ///< the header of the block that it stands in, or none
        LineRange end{};            ///< of a header: its END
        Index lastParameter = none; ///< the last assignment directly in its block
        Index lastObject = none;    ///< the last header directly in its block
    };

    /// A path that some statement states.
    struct Node
    {
        Index parent;
        Index last; ///< the last statement that states it, or none
        std::string component;
    };

    /// Reads the whole text, which need not live on. Throws bad_alloc.
    explicit StatementTree(const SourceText &source);
    StatementTree(StatementTree &&) = default;
    StatementTree &operator=(StatementTree &&) = default;

    /// The node at a full path in normal form; none where no statement is.
    [[nodiscard]] Index find(std::string_view path) const;
    /// The same, or the nearest above that there is.
    [[nodiscard]] Index findNearest(std::string_view path) const;
    /// The child of a node; none where no statement states it.
    [[nodiscard]] Index findChild(Index parent, std::string_view component) const;

    /// By its number, which must not be none.
    [[nodiscard]] const Node &node(Index index) const { return nodes_[index]; }
    /// Likewise.
    [[nodiscard]] const Stated &statement(Index index) const { return statements_[index]; }

    /// The last statement of the node at the path; null where there is none.
    [[nodiscard]] const Stated *lastOf(std::string_view path) const;

    /// The number, counted from 1, of the first line of what states the path
    /// last, or else the nearest object above it; 0 where there is none.
    [[nodiscard]] std::size_t lineOf(std::string_view path) const;

    /// What stands directly at the top level last; none where nothing does.
    [[nodiscard]] Index lastTopLevel() const { return lastTopLevel_; }

    /// The first line of a statement that the end of the text cuts off, or the
    /// number of all lines.
    [[nodiscard]] std::size_t unfinishedLine() const { return unfinishedLine_; }

    /// Gives a node another component; what is below goes with it. A node that
    /// has that component already is no longer found.
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
    std::deque<Node> nodes_; ///< never moved, for the keys point into them
    std::unordered_map<Key, Index, KeyHash> children_;
    Index lastTopLevel_ = none;
    std::size_t unfinishedLine_ = 0;
};

} // namespace veltext
