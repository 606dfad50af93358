// What the changes of an upgrade mean for names and places.
#pragma once

#include "velparser/api/velparser.h"
#include "veltext/statementTree.h"
#include "veltext/treeData.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltool {

/// The new name, where the change is one: Name of a parameter, TYPE or TYPE:Name of an
/// object. Empty for other changes.
[[nodiscard]] std::string newNameIn(const velparser::UpgradeChange &change);

/// Where parameters that moved are in the end, and where they are in the text
/// with the new names: one may move twice, and it or an object above it may be
/// renamed after that.
[[nodiscard]] veltext::Moves movesIn(const std::vector<velparser::UpgradeChange> &changes);

/// The lines of a text, by the paths that its data has after an upgrade.
class UpgradedLines
{
public:
    UpgradedLines(const veltext::SourceText &text,
                  const std::vector<velparser::UpgradeChange> &changes);

    /// The line that an item came from, counted from 1; for an item that the
    /// upgrade added, that of the nearest object above it; 0 if there is none.
    [[nodiscard]] std::size_t lineOf(const std::string &path) const;

private:
    veltext::StatementTree tree_;
    veltext::Moves moves_;
};

} // namespace veltool
