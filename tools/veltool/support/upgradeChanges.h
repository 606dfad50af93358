// What the changes of an upgrade say about names and places.
#pragma once

#include "veltext/statementTree.h"
#include "veltext/treeData.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltool {

/// What a change names as the new name: `"Name"` of a parameter, TYPE or
/// TYPE:Name of an object. Empty for other changes.
[[nodiscard]] std::string newNameIn(std::string_view change);

/// Where parameters that moved are in the end, and where they are in the text
/// with the new names: one may move twice, and it or an object above it may be
/// renamed after that.
[[nodiscard]] veltext::Moves movesIn(const std::vector<std::string> &changes);

/// The lines of a text, by the paths that its data has after an upgrade.
class UpgradedLines
{
public:
    UpgradedLines(const veltext::SourceText &text, const std::vector<std::string> &changes);

    /// The line that an item came from, counted from 1; for an item that the
    /// upgrade added, that of the nearest object above it; 0 if there is none.
    [[nodiscard]] std::size_t lineOf(const std::string &path) const;

private:
    veltext::StatementTree tree_;
    veltext::Moves moves_;
};

} // namespace veltool
