#include "tools/veltool/support/upgradeChanges.h"

#include "tools/veltool/support/finding.h"

#include <string_view>

namespace veltool {

namespace {

constexpr std::string_view renamed = "renamed to ";
constexpr std::string_view moved = "moved to ";

/// `path`, or a path below it, after `from` has become `to`.
std::string pathAfter(const std::string &path, const std::string &from, const std::string &to)
{
    const bool concerned =
        path.starts_with(from) && (path.size() == from.size() || path[from.size()] == '/');
    return concerned ? to + path.substr(from.size()) : path;
}

} // namespace

std::string newNameIn(std::string_view change)
{
    if (!change.starts_with(renamed))
        return {};
    change.remove_prefix(renamed.size());
    if (change.size() > 1 && change.starts_with('"') && change.ends_with('"'))
        change = change.substr(1, change.size() - 2);
    return std::string(change);
}

veltext::Moves movesIn(const std::vector<std::string> &changes)
{
    veltext::Moves moves;
    for (const std::string &change : changes) {
        const Finding parts = parseFinding(change);
        const std::string name = newNameIn(parts.message);
        if (parts.message.starts_with(moved)) {
            const auto earlier = moves.extract(parts.path);
            moves[parts.message.substr(moved.size())] = earlier ? earlier.mapped() : parts.path;
        } else if (!name.empty()) {
            const std::string to = parts.path.substr(0, parts.path.rfind('/') + 1) + name;
            veltext::Moves after;
            for (const auto &[now, before] : moves)
                after[pathAfter(now, parts.path, to)] = pathAfter(before, parts.path, to);
            moves = std::move(after);
        }
    }
    return moves;
}

UpgradedLines::UpgradedLines(const veltext::SourceText &text,
                             const std::vector<std::string> &changes)
    : tree_(text), moves_(movesIn(changes))
{
    for (const std::string &change : changes) {
        const Finding parts = parseFinding(change);
        const std::string name = newNameIn(parts.message);
        const veltext::StatementTree::Index node = tree_.find(parts.path);
        if (!name.empty() && node != veltext::StatementTree::none)
            tree_.rename(node, name);
    }
}

std::size_t UpgradedLines::lineOf(const std::string &path) const
{
    const auto move = moves_.find(path);
    return tree_.lineOf(move == moves_.end() ? path : move->second);
}

} // namespace veltool
