// Finds the new names, moved parameters and lines after an upgrade.
#include "tools/veltool/support/upgradeChanges.h"

namespace veltool {

namespace {

using velparser::ChangeKind;
using velparser::UpgradeChange;

bool isRenaming(const UpgradeChange &change)
{
    return change.kind == ChangeKind::RenamedParameter || change.kind == ChangeKind::RenamedObject;
}

/// `path` after `from` was renamed to `to`; unchanged if it is not at or below `from`.
std::string pathAfter(const std::string &path, const std::string &from, const std::string &to)
{
    const bool concerned =
        path.starts_with(from) && (path.size() == from.size() || path[from.size()] == '/');
    return concerned ? to + path.substr(from.size()) : path;
}

} // namespace

std::string newNameIn(const UpgradeChange &change)
{
    if (!isRenaming(change)) {
        return {};
    }
    return change.newPath.substr(change.newPath.rfind('/') + 1);
}

veltext::Moves movesIn(const std::vector<UpgradeChange> &changes)
{
    veltext::Moves moves;
    for (const UpgradeChange &change : changes) {
        if (change.kind == ChangeKind::MovedParameter) {
            const auto earlier = moves.extract(change.path);
            moves[change.newPath] = earlier ? earlier.mapped() : change.path;
        } else if (isRenaming(change)) {
            veltext::Moves after;
            for (const auto &[now, before] : moves) {
                after[pathAfter(now, change.path, change.newPath)] =
                    pathAfter(before, change.path, change.newPath);
            }
            moves = std::move(after);
        }
    }
    return moves;
}

UpgradedLines::UpgradedLines(const veltext::SourceText &text,
                             const std::vector<UpgradeChange> &changes)
    : tree_(text), moves_(movesIn(changes))
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
