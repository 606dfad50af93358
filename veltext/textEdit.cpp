// Collects edits, and writes the text with all edits in one pass.
#include "veltext/textEdit.h"

#include "velapilt/src/velPathParts.h"
#include "veltext/error.h"
#include "veltext/valueEdit.h"

#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velapilt.h"

#include <algorithm>

namespace veltext {

namespace {

constexpr const char *usualIndent = "  ";

std::string indentOf(const SourceText &source, LineRange lines)
{
    return std::string(leadingBlanks(source.line(lines.first)));
}

} // namespace

/// Writes the edited text.
///
/// 1. Each edit becomes splices: bytes of the source and the text that replaces them.
/// 2. The splices are sorted by position and applied.
class EditWriter
{
public:
    using Index = StatementTree::Index;
    using Stated = StatementTree::Stated;

    explicit EditWriter(const TextEdit &edit)
        : edit_(edit), source_(edit.source_), lineEnd_(source_.lineEnd(0))
    {
    }

    std::string write()
    {
        for (const auto &[index, value] : edit_.values_) {
            splices_.push_back(valueSplice(source_, statement(index).lines, value));
        }
        for (const auto &[index, component] : edit_.components_) {
            splices_.push_back(componentSplice(source_, statement(index).lines, component));
        }
        for (const LineRange &lines : edit_.removed_) {
            splices_.push_back({source_.lineStart(lines.first), endOf(lines), {}});
        }
        for (const auto &[node, paths] : edit_.additions_) {
            insert(node, paths);
        }
        return apply();
    }

private:
    const Stated &statement(Index index) const { return edit_.tree_.statement(index); }

    /// The position after the lines.
    std::size_t endOf(LineRange lines) const
    {
        return source_.lineStart(lines.first + lines.count);
    }

    /// New assignments go after the last assignment of the block, and new objects
    /// go to its end: this is the order in which authors write a block.
    void insert(Index node, const std::vector<std::string> &paths)
    {
        const Index header = edit_.tree_.node(node).last;
        for (const bool objects : {false, true}) {
            std::string text;
            for (const std::string &path : paths) {
                const TextEdit::Added &added = edit_.added_.at(path);
                if (added.isObject == objects) {
                    render(added, indentFor(header, objects), &text);
                }
            }
            if (!text.empty()) {
                splices_.push_back({place(header, objects), place(header, objects), text});
            }
        }
    }

    std::size_t place(Index header, bool isObject) const
    {
        if (header == StatementTree::none) {
            return source_.lineStart(edit_.tree_.unfinishedLine());
        }
        const Stated &block = statement(header);
        if (isObject) {
            return source_.lineStart(block.end.first);
        }
        const Index sibling = block.lastParameter;
        return endOf(sibling == StatementTree::none ? block.lines : statement(sibling).lines);
    }

    /// The indent of a sibling of the same kind, otherwise of another sibling.
    std::string indentFor(Index header, bool isObject) const
    {
        if (header == StatementTree::none) {
            const Index sibling = edit_.tree_.lastTopLevel();
            return sibling == StatementTree::none ? ""
                                                  : indentOf(source_, statement(sibling).lines);
        }
        const Stated &block = statement(header);
        const Index like = isObject ? block.lastObject : block.lastParameter;
        const Index other = isObject ? block.lastParameter : block.lastObject;
        for (const Index sibling : {like, other}) {
            if (sibling != StatementTree::none) {
                return indentOf(source_, statement(sibling).lines);
            }
        }
        return indentOf(source_, block.lines) + indentStep(block);
    }

    /// The indent of the block in addition to that of the block around it.
    std::string indentStep(const Stated &block) const
    {
        if (block.block == StatementTree::none) {
            return usualIndent;
        }
        const std::string own = indentOf(source_, block.lines);
        const std::string outer = indentOf(source_, statement(block.block).lines);
        return own.starts_with(outer) ? own.substr(outer.size()) : usualIndent;
    }

    void render(const TextEdit::Added &added, const std::string &indent, std::string *text) const
    {
        if (!added.isObject) {
            const std::string guard(added.comment.empty() ? guardOf(added.value) : "");
            line(indent + added.component + (added.value.empty() ? " =" : " = ") + added.value +
                     guard,
                 text);
            if (!added.comment.empty()) {
                text->insert(text->size() - lineEnd_.size(), ' ' + added.comment);
            }
            return;
        }
        const velComponentParts parts = velSplitComponent(added.component);
        line(indent + headerText(parts.type, parts.name), text);
        for (const bool objects : {false, true}) {
            for (const std::string &path : added.children) {
                const TextEdit::Added &child = edit_.added_.at(path);
                if (child.isObject == objects) {
                    render(child, indent + usualIndent, text);
                }
            }
        }
        line(indent + "END", text);
    }

    /// Adds a statement, wrapped as the editor wraps it.
    void line(const std::string &statement, std::string *text) const
    {
        velArray pieces(velArrayKind::Strings);
        veltext::require(velWrapLine(statement.c_str(), velUsualWidth, &pieces));
        const velStringList lines = pieces.takeStrings();
        for (const char *piece : lines) {
            text->append(piece).append(lineEnd_);
        }
    }

    std::string apply()
    {
        std::stable_sort(splices_.begin(), splices_.end(), [](const Splice &a, const Splice &b) {
            return a.begin != b.begin ? a.begin < b.begin : a.end < b.end;
        });
        std::string result;
        std::size_t done = 0;
        for (const Splice &splice : splices_) {
            if (splice.begin < done) { // it is inside a removed block
                continue;
            }
            result.append(source_.bytes(), done, splice.begin - done);
            done = splice.end;
            append(splice, &result);
        }
        result.append(source_.bytes(), done);
        return result;
    }

    /// If the last line of the text has no line end, the last of the lines added
    /// after it has none either.
    void append(const Splice &splice, std::string *result) const
    {
        const bool isInsertion = splice.begin == splice.end && splice.text.ends_with('\n');
        const bool isFirst = splice.begin == source_.lineStart(0);
        if (!isInsertion || isFirst || result->empty() || result->ends_with('\n')) {
            *result += splice.text;
            return;
        }
        *result += lineEnd_ + splice.text;
        result->resize(result->size() - lineEnd_.size());
    }

    const TextEdit &edit_;
    const SourceText &source_;
    std::string lineEnd_; ///< for new lines
    std::vector<Splice> splices_;
};

TextEdit::TextEdit(const SourceText &source) : source_(source), tree_(source) {}

TextEdit::Index TextEdit::require(const std::string &path) const
{
    const Index index = tree_.find(path);
    if (index == StatementTree::none) {
        throw Error(path + ": the file does not contain this object or parameter");
    }
    return index;
}

void TextEdit::setValue(const std::string &path, const std::string &value)
{
    values_[tree_.node(require(path)).last] = value;
}

void TextEdit::remove(const std::string &path)
{
    for (Index i = tree_.node(require(path)).last; i != StatementTree::none;
         i = tree_.statement(i).previous) {
        LineRange lines = tree_.statement(i).lines;
        const LineRange end = tree_.statement(i).end;
        if (end.count > 0) {
            lines.count = end.first + end.count - lines.first;
        }
        removed_.push_back(lines);
    }
}

void TextEdit::rename(const std::string &path, const std::string &component)
{
    const Index node = require(path);
    for (Index i = tree_.node(node).last; i != StatementTree::none;
         i = tree_.statement(i).previous) {
        components_[i] = component;
    }
    tree_.rename(node, component);
}

std::string TextEdit::commentOf(const std::string &path) const
{
    Statement statement;
    const LineRange lines = tree_.statement(tree_.node(require(path)).last).lines;
    readStatement(source_, lines.first, Positions::Skip, &statement);
    return statement.text.substr(statement.comment);
}

void TextEdit::addParameter(const std::string &path, const std::string &value,
                            const std::string &comment)
{
    add(path, {.component = velLastOfPath(path),
               .value = value,
               .comment = comment,
               .isObject = false,
               .children = {}});
}

void TextEdit::addObject(const std::string &path)
{
    add(path, {.component = velLastOfPath(path),
               .value = {},
               .comment = {},
               .isObject = true,
               .children = {}});
}

void TextEdit::add(const std::string &path, Added added)
{
    const std::string parent = velPathOfParent(path);
    const auto above = added_.find(parent);
    if (above != added_.end()) {
        above->second.children.push_back(path);
    } else {
        additions_[require(parent)].push_back(path);
    }
    added_.emplace(path, std::move(added));
}

std::string TextEdit::bytes() const
{
    return EditWriter(*this).write();
}

} // namespace veltext
