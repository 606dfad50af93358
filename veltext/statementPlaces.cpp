// Reads a text once and records the lines of the wanted nodes.
#include "veltext/statementPlaces.h"

#include "veltext/treeWalk.h"

#include <unordered_set>

namespace veltext {

namespace {

/// The open blocks and the path that they form.
class OpenBlocks
{
public:
    struct Block
    {
        std::size_t pathLength; ///< length of the path around the block
        const velNode *node;
        Place place; ///< its end is unknown until the block is closed
    };

    /// `handle` is null if the node is not wanted.
    void open(velHandle *handle, const Statement &statement)
    {
        const std::size_t length = path_.size();
        path_.append(1, '/').append(statement.component);
        const velNode *node = handle != nullptr ? velFindNode(handle, path_.c_str()) : nullptr;
        const std::size_t body = statement.lines.first + statement.lines.count;
        blocks_.push_back({length, node, {statement.lines, body}});
    }

    [[nodiscard]] bool isEmpty() const { return blocks_.empty(); }

    Block close()
    {
        const Block block = blocks_.back();
        path_.resize(block.pathLength);
        blocks_.pop_back();
        return block;
    }

private:
    std::string path_;
    std::vector<Block> blocks_;
};

} // namespace

StatementPlaces::StatementPlaces(const SourceText &source, velHandle *handle,
                                 const std::vector<const velNode *> &wanted)
{
    std::unordered_set<std::string> components; ///< of the wanted nodes, to skip most look-ups
    for (const velNode *node : wanted) {
        if (node != nullptr && places_.try_emplace(node).second) {
            components.insert(velComponentOf(velDescribe(handle, node)));
        }
    }
    if (places_.empty()) {
        return;
    }
    OpenBlocks open;
    Statement statement;
    const auto close = [&](std::size_t endLine) {
        OpenBlocks::Block block = open.close();
        const auto found = places_.find(block.node);
        block.place.lines.count = endLine - block.place.lines.first;
        if (found != places_.end()) {
            found->second.push_back(block.place);
        }
    };
    for (std::size_t line = 0; line < source.lineCount(); line += statement.lines.count) {
        readStatement(source, line, Positions::Skip, &statement);
        const std::size_t end = line + statement.lines.count;
        const auto openBlock = [&] {
            open.open(components.contains(statement.component) ? handle : nullptr, statement);
        };
        switch (statement.kind) {
        case StatementKind::Header:
            openBlock();
            break;
        case StatementKind::Parameter:
            openBlock();
            close(end);
            break;
        case StatementKind::End:
            if (!open.isEmpty()) {
                close(end);
            }
            break;
        case StatementKind::Nothing:
        case StatementKind::Action:
        case StatementKind::Unfinished:
            break;
        }
    }
}

const std::vector<Place> &StatementPlaces::of(const velNode *node) const
{
    static const std::vector<Place> none;
    const auto found = places_.find(node);
    return found == places_.end() ? none : found->second;
}

} // namespace veltext
