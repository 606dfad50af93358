// Finds the new names, moved parameters and lines after an upgrade.
#pragma once

#include "velparser/api/velparser.h"
#include "veltext/keepLayout.h"
#include "veltext/statementTree.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltool {

/// The new path component if the change is a new name: Name of a parameter, TYPE or
/// TYPE:Name of an object. Empty for other changes.
[[nodiscard]] std::string newNameIn(const velparser::UpgradeChange &change);

/// The changes that gave an item another path.
[[nodiscard]] std::vector<veltext::PathChange>
pathChangesIn(const std::vector<velparser::UpgradeChange> &changes);

/// The lines of a text, found by the paths after an upgrade.
class UpgradedLines
{
public:
    UpgradedLines(const veltext::SourceText &text,
                  const std::vector<velparser::UpgradeChange> &changes);

    /// The line of an object or parameter, counted from 1. If the upgrade added
    /// it, the line of the nearest object above it; 0 if there is none.
    [[nodiscard]] std::size_t lineOf(const std::string &path) const;

private:
    veltext::StatementTree tree_;
    veltext::Moves moves_;
};

} // namespace veltool
