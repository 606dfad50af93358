#include "tools/veltool/statementIndex.h"

namespace veltool {

namespace {

/// The path of the block that is open, built up and cut back.
class OpenPath
{
public:
    void open(const std::string &component)
    {
        lengths_.push_back(path_.size());
        path_ += '/';
        path_ += component;
    }

    void close()
    {
        if (lengths_.empty())
            return;
        path_.resize(lengths_.back());
        lengths_.pop_back();
    }

    [[nodiscard]] const std::string &path() const { return path_; }

private:
    std::string path_;
    std::vector<std::size_t> lengths_;
};

} // namespace

StatementIndex::StatementIndex(const SourceText &source, velHandle *handle)
{
    OpenPath open;
    Statement statement;
    const auto record = [&] {
        if (const velNode *node = velFindNode(handle, open.path().c_str()))
            lines_[node] = statement.lines;
    };
    for (std::size_t line = 0; line < source.lineCount(); line += statement.lines.count) {
        readStatement(source, line, Positions::Skip, &statement);
        switch (statement.kind) {
        case StatementKind::Header:
            open.open(statement.component);
            record();
            break;
        case StatementKind::Parameter:
            open.open(statement.component);
            record();
            open.close();
            break;
        case StatementKind::End:
            open.close();
            break;
        default:
            break;
        }
    }
}

const LineRange *StatementIndex::find(const velNode *node) const
{
    const auto found = lines_.find(node);
    return found == lines_.end() ? nullptr : &found->second;
}

std::size_t StatementIndex::lineOf(const velNode *node) const
{
    const LineRange *lines = find(node);
    return lines ? lines->first + 1 : 0;
}

} // namespace veltool
