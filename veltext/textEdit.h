// Edits of a text that keep everything else as its author wrote it.
//
// Edits are collected and applied together. An edit changes only the characters
// of its value or name; each statement keeps its lines, indent, comment and line
// ends. New statements follow the style of their siblings.
#pragma once

#include "veltext/statementTree.h"

#include <map>
#include <string>
#include <vector>

namespace veltext {

/// Edits of one text, in any order. `bytes` applies them. The class checks neither
/// the rules nor whether a file can hold a value (see valueEdit.h).
class TextEdit
{
public:
    /// The text must outlive the object.
    explicit TextEdit(const SourceText &source);

    /// The statements, with their new names.
    [[nodiscard]] const StatementTree &tree() const { return tree_; }

    // Paths are full paths in normal form. These functions throw an Error if the
    // text does not state the path.

    /// Replaces the value in the last assignment.
    void setValue(const std::string &path, const std::string &value);

    /// Removes all assignments of a parameter, or all blocks that open an object,
    /// with the comments on their lines.
    void remove(const std::string &path);

    /// The comment after the last assignment, with its '#'; empty without one.
    [[nodiscard]] std::string commentOf(const std::string &path) const;

    /// Changes the component of a node, in all its statements.
    void rename(const std::string &path, const std::string &component);

    /// Adds an assignment after the last one of the last block that opens the
    /// object above, which may be a new object. `comment` comes after the value;
    /// it begins with '#' or is empty.
    void addParameter(const std::string &path, const std::string &value,
                      const std::string &comment = {});
    /// Adds an empty block at the end of the last block of the object above.
    void addObject(const std::string &path);

    /// The edited text.
    [[nodiscard]] std::string bytes() const;

private:
    using Index = StatementTree::Index;

    /// A new statement; for an object, with its contents.
    struct Added
    {
        std::string component;
        std::string value;
        std::string comment;
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
