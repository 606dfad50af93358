// Finds the new names, moved parameters and lines after an upgrade.
#include "tools/veltool/support/upgradeChanges.h"

#include "velapilt/src/velPathParts.h"

namespace veltool {

namespace {

using velparser::ChangeKind;
using velparser::UpgradeChange;

bool isRenaming(const UpgradeChange &change)
{
    return change.kind == ChangeKind::RenamedParameter || change.kind == ChangeKind::RenamedObject;
}

} // namespace

std::string newNameIn(const UpgradeChange &change)
{
    if (!isRenaming(change)) {
        return {};
    }
    return velLastOfPath(change.newPath);
}

std::vector<veltext::PathChange> pathChangesIn(const std::vector<UpgradeChange> &changes)
{
    using Kind = veltext::PathChange::Kind;
    std::vector<veltext::PathChange> paths;
    for (const UpgradeChange &change : changes) {
        if (isRenaming(change) || change.kind == ChangeKind::MovedParameter) {
            paths.push_back(
                {isRenaming(change) ? Kind::Renamed : Kind::Moved, change.path, change.newPath});
        }
    }
    return paths;
}

UpgradedLines::UpgradedLines(const veltext::SourceText &text,
                             const std::vector<UpgradeChange> &changes)
    : tree_(text), moves_(veltext::movesIn(pathChangesIn(changes)))
{
    for (const UpgradeChange &change : changes) {
        const std::string name = newNameIn(change);
        const veltext::StatementTree::Index node = tree_.find(change.path);
        if (!name.empty() && node != veltext::StatementTree::none) {
            tree_.rename(node, name);
        }
    }
}

std::size_t UpgradedLines::lineOf(const std::string &path) const
{
    const auto move = moves_.find(path);
    return tree_.lineOf(move == moves_.end() ? path : move->second);
}

} // namespace veltool
