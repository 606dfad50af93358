// Builds the tree of statements in one pass over a text, and finds paths in it.
#include "veltext/statementTree.h"

namespace veltext {

/// Fills a tree from the statements of a text, one after the other.
class StatementReader
{
public:
    using Index = StatementTree::Index;

    StatementReader(const SourceText &source, StatementTree *tree) : source_(source), tree_(*tree)
    {
    }

    void run()
    {
        tree_.unfinishedLine_ = source_.lineCount();
        Statement statement;
        for (std::size_t line = 0; line < source_.lineCount(); line += statement.lines.count) {
            readStatement(source_, line, Positions::Skip, &statement);
            take(statement);
        }
    }

private:
    void take(const Statement &statement)
    {
        switch (statement.kind) {
        case StatementKind::Header:
            open_.push_back(state(statement));
            break;
        case StatementKind::Parameter:
            static_cast<void>(state(statement));
            break;
        case StatementKind::End:
            close(statement.lines);
            break;
        case StatementKind::Unfinished:
            tree_.unfinishedLine_ = statement.lines.first;
            break;
        case StatementKind::Nothing:
        case StatementKind::Action:
            break;
        }
    }

    /// Records an assignment or header under its path.
    Index state(const Statement &statement)
    {
        const Index block = open_.empty() ? StatementTree::none : open_.back();
        const Index parent = open_.empty() ? StatementTree::root : tree_.statements_[block].node;
        const Index node = tree_.findOrMake(parent, statement.component);
        const auto index = static_cast<Index>(tree_.statements_.size());
        Index &last = tree_.nodes_[node].last;
        tree_.statements_.push_back(
            {.lines = statement.lines, .node = node, .previous = last, .block = block});
        last = index;
        if (open_.empty()) {
            tree_.lastTopLevel_ = index;
        } else if (statement.kind == StatementKind::Parameter) {
            tree_.statements_[block].lastParameter = index;
        } else {
            tree_.statements_[block].lastObject = index;
        }
        return index;
    }

    void close(LineRange lines)
    {
        if (open_.empty()) {
            return;
        }
        tree_.statements_[open_.back()].end = lines;
        open_.pop_back();
    }

    const SourceText &source_;
    StatementTree &tree_;
    std::vector<Index> open_; ///< the headers of the open blocks
};

StatementTree::StatementTree(const SourceText &source)
{
    nodes_.push_back({.parent = none, .last = none, .component = {}});
    StatementReader(source, this).run();
}

StatementTree::Index StatementTree::find(std::string_view path) const
{
    Index index = root;
    while (index != none && path.size() > 1) {
        const std::size_t end = path.find('/', 1);
        index = findChild(index, path.substr(1, end == path.npos ? end : end - 1));
        path.remove_prefix(end == path.npos ? path.size() : end);
    }
    return index;
}

StatementTree::Index StatementTree::findNearest(std::string_view path) const
{
    Index index = root;
    while (path.size() > 1) {
        const std::size_t end = path.find('/', 1);
        const Index child = findChild(index, path.substr(1, end == path.npos ? end : end - 1));
        if (child == none) {
            return index;
        }
        index = child;
        path.remove_prefix(end == path.npos ? path.size() : end);
    }
    return index;
}

StatementTree::Index StatementTree::findChild(Index parent, std::string_view component) const
{
    const auto found = children_.find(Key{parent, component});
    return found == children_.end() ? none : found->second;
}

const StatementTree::Stated *StatementTree::lastOf(std::string_view path) const
{
    const Index index = find(path);
    if (index == none || nodes_[index].last == none) {
        return nullptr;
    }
    return &statements_[nodes_[index].last];
}

std::size_t StatementTree::lineOf(std::string_view path) const
{
    const Index last = nodes_[findNearest(path)].last;
    return last == none ? 0 : statements_[last].lines.first + 1;
}

void StatementTree::rename(Index index, const std::string &component)
{
    Node &node = nodes_[index];
    children_.erase(Key{node.parent, node.component});
    node.component = component;
    children_.emplace(Key{node.parent, node.component}, index);
}

StatementTree::Index StatementTree::findOrMake(Index parent, const std::string &component)
{
    const Index found = findChild(parent, component);
    if (found != none) {
        return found;
    }
    const auto index = static_cast<Index>(nodes_.size());
    nodes_.push_back({.parent = parent, .last = none, .component = component});
    children_.emplace(Key{parent, nodes_.back().component}, index);
    return index;
}

} // namespace veltext
