// Edits to a text that leave everything else as its author wrote it.
//
// Edits are collected and applied in one go: each statement keeps its lines,
// indent, remark and line ends but for the characters that an edit is about.
// What is new follows the style of what stands beside it.
#pragma once

#include "veltext/statementTree.h"

#include <map>
#include <string>
#include <vector>

namespace veltext {

/// Edits of one text, in any order; nothing is written before `bytes`. An edit is
/// not checked against the rules, nor a value for what a file can hold (valueEdit.h).
class TextEdit
{
public:
    /// The text must outlive the object.
    explicit TextEdit(const SourceText &source);

    /// The statements, with the names that they will have.
    [[nodiscard]] const StatementTree &tree() const { return tree_; }

    // Paths are full ones in normal form. Throws an Error for a path that no
    // statement of the text states.

    /// Replaces the value in the last assignment.
    void setValue(const std::string &path, const std::string &value);

    /// Takes all assignments of a parameter out, or all blocks that open an
    /// object; their remarks go with them.
    void remove(const std::string &path);

    /// The remark behind the last assignment, from its '#' on; empty without one.
    [[nodiscard]] std::string remarkOf(const std::string &path) const;

    /// Gives the node another component, in all its statements.
    void rename(const std::string &path, const std::string &component);

    /// Adds an assignment behind the last one of the last block that opens the
    /// object above, which may be a new one. `remark` stands behind the value;
    /// empty, or from its '#' on.
    void addParameter(const std::string &path, const std::string &value,
                      const std::string &remark = {});
    /// Adds an empty block at the end of that block.
    void addObject(const std::string &path);

    /// The edited text.
    [[nodiscard]] std::string bytes() const;

private:
    using Index = StatementTree::Index;

    /// A statement that is new; of an object with what is in it.
    struct Added
    {
        std::string component;
        std::string value;
        std::string remark;
        bool isObject;
        std::vector<std::string> children; ///< their paths
    };

    [[nodiscard]] Index require(const std::string &path) const;
    void add(const std::string &path, Added added);

    const SourceText &source_;
    StatementTree tree_;
    std::map<Index, std::string> values_;     ///< by assignment
    std::map<Index, std::string> components_; ///< by statement
    std::vector<LineRange> removed_;
    std::map<std::string, Added> added_;                  ///< by path
    std::map<Index, std::vector<std::string>> additions_; ///< paths, by node of the text

    friend class EditWriter;
};

} // namespace veltext
