// Which lines of a text an edit may change, so that a test can compare all others.
#pragma once

#include "veltext/statementTree.h"

#include <cstddef>
#include <set>
#include <string>

namespace veltext::test {

/// The lines that state a path: the lines of all its statements, or only of the
/// last one. For an object, these are its blocks.
[[nodiscard]] inline std::set<std::size_t> linesOf(const StatementTree &tree,
                                                   const std::string &path, bool all)
{
    std::set<std::size_t> lines;
    const StatementTree::Index node = tree.find(path);
    if (node == StatementTree::none) {
        return lines;
    }
    for (auto i = tree.node(node).last; i != StatementTree::none;
         i = all ? tree.statement(i).previous : StatementTree::none) {
        LineRange range = tree.statement(i).lines;
        if (tree.statement(i).end.count > 0) {
            range.count = tree.statement(i).end.first + tree.statement(i).end.count - range.first;
        }
        for (std::size_t line = 0; line < range.count; ++line) {
            lines.insert(range.first + line);
        }
    }
    return lines;
}

/// The text without these lines, with equal line ends.
[[nodiscard]] inline std::string otherLines(const SourceText &source,
                                            const std::set<std::size_t> &lines)
{
    std::string text;
    for (std::size_t i = 0; i < source.lineCount(); ++i) {
        if (lines.contains(i)) {
            continue;
        }
        text += source.line(i);
        // A last line without a line end gets a line end when a line is added
        // after it.
        const bool isLast = i + 1 == source.lineCount() && !source.bytes().ends_with('\n');
        text += isLast && source.line(0).ends_with('\r') ? "\r\n" : "\n";
    }
    return text;
}

} // namespace veltext::test
