// Turns the steps of a merge into edits of the lines of OURS, and writes the result.
#include "veltext/mergeText.h"

#include "velapilt/src/velSpace.h"
#include "veltext/statementPlaces.h"
#include "veltext/treeWalk.h"
#include "veltext/valueEdit.h"

#include <algorithm>
#include <unordered_set>

namespace veltext {

namespace {

std::string bytesOf(const SourceText &source, LineRange lines)
{
    const std::size_t begin = source.lineStart(lines.first);
    return source.bytes().substr(begin, source.lineStart(lines.first + lines.count) - begin);
}

std::string allLinesOf(const SourceText &source)
{
    return bytesOf(source, {0, source.lineCount()});
}

/// The bytes before the first line.
std::string byteOrderMarkOf(const SourceText &source)
{
    return source.bytes().substr(0, source.lineStart(0));
}

/// These lines, each with the given line end.
std::string linesOf(const SourceText &source, LineRange lines, const std::string &lineEnd)
{
    std::string text;
    for (std::size_t i = 0; i < lines.count; ++i) {
        std::string_view line = source.line(lines.first + i);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        text.append(line).append(lineEnd);
    }
    return text;
}

std::string indentOf(const SourceText &source, const Place &place)
{
    return std::string(leadingBlanks(source.line(place.lines.first)));
}

/// Whether the line has a comment and nothing else.
bool isCommentLine(std::string_view line)
{
    return velTrim(line).starts_with('#');
}

/// A node and everything below it as text. `indent` is the indent of the first
/// line.
std::string blockText(velHandle *tree, const velNode *node, const std::string &indent,
                      const std::string &lineEnd)
{
    std::string text;
    std::vector<std::string> open; ///< the indents of the open blocks
    const auto closeTo = [&](std::size_t depth) {
        for (; open.size() > depth; open.pop_back()) {
            text.append(open.back()).append("END").append(lineEnd);
        }
    };
    for (TreeWalk walk(tree, node, "/"); walk.node() != nullptr; walk.step()) {
        closeTo(walk.depth());
        const std::string inner = indent + std::string(2 * walk.depth(), ' ');
        const char *value = walk.info().value;
        text.append(inner)
            .append(statementOf(walk.info()))
            .append(guardOf(value != nullptr ? value : ""));
        text.append(lineEnd);
        if (walk.info().kind != velParam) {
            open.push_back(inner);
        }
    }
    closeTo(0);
    return text;
}

std::vector<const velNode *> nodesOf(const std::vector<MergeStep> &steps,
                                     std::initializer_list<const velNode * MergeStep::*> members)
{
    std::vector<const velNode *> nodes;
    for (const MergeStep &step : steps) {
        for (const auto member : members) {
            nodes.push_back(step.*member);
        }
    }
    return nodes;
}

/// Turns steps into edits of OURS.
class Editor
{
public:
    Editor(const MergeTexts &texts, const MergeTrees &trees, const std::vector<MergeStep> &steps)
        : texts_(texts), trees_(trees), lineEnd_(texts.ours.lineEnd(0)),
          inBase_(texts.base, trees.base, nodesOf(steps, {&MergeStep::base})),
          inOurs_(texts.ours, trees.ours,
                  nodesOf(steps, {&MergeStep::ours, &MergeStep::oursParent, &MergeStep::previous})),
          inTheirs_(texts.theirs, trees.theirs, nodesOf(steps, {&MergeStep::theirs}))
    {
        for (std::size_t i = 0; i < texts.ours.lineCount(); ++i) {
            if (isCommentLine(texts.ours.line(i))) {
                commentsOfOurs_.insert(velTrim(texts.ours.line(i)));
            }
        }
    }

    std::vector<LineEdit> edits(const std::vector<MergeStep> &steps)
    {
        for (const MergeStep &step : steps) {
            edit(step);
        }
        std::stable_sort(edits_.begin(), edits_.end(), [](const LineEdit &a, const LineEdit &b) {
            return a.first != b.first ? a.first < b.first : a.count == 0 && b.count > 0;
        });
        return std::move(edits_);
    }

private:
    [[nodiscard]] bool isParam(velHandle *tree, const velNode *node) const
    {
        return node != nullptr && velDescribe(tree, node).kind == velParam;
    }

    void edit(const MergeStep &step)
    {
        const bool isConflict = step.kind == StepKind::Conflict;
        const std::vector<Place> &places = inOurs_.of(step.ours);
        if (places.empty()) {
            const std::size_t line = insertionLine(step);
            edits_.push_back({line, 0, "", theirsText(step), isConflict});
            return;
        }
        const bool areParams =
            isParam(trees_.ours, step.ours) && isParam(trees_.theirs, step.theirs);
        for (const Place &place : places) {
            const bool isLast = &place == &places.back();
            // If there are several assignments, only the last one counts.
            if (areParams && !isLast) {
                continue;
            }
            std::string theirs;
            if (isLast) {
                theirs = areParams && !isConflict ? newAssignment(step, place) : theirsText(step);
            }
            edits_.push_back({place.lines.first, place.lines.count,
                              bytesOf(texts_.ours, place.lines), std::move(theirs), isConflict});
        }
    }

    [[nodiscard]] std::size_t insertionLine(const MergeStep &step) const
    {
        const std::vector<Place> &before = inOurs_.of(step.previous);
        if (!before.empty()) {
            return before.back().endLine();
        }
        const std::vector<Place> &around = inOurs_.of(step.oursParent);
        return around.empty() ? texts_.ours.lineCount() : around.back().bodyLine;
    }

    /// The assignment of OURS with the value of THEIRS. If OURS did not change
    /// the assignment, and THEIRS has it with the same indent, the lines of THEIRS
    /// are taken with their comment.
    [[nodiscard]] std::string newAssignment(const MergeStep &step, const Place &place) const
    {
        const std::vector<Place> &former = inBase_.of(step.base);
        const std::vector<Place> &later = inTheirs_.of(step.theirs);
        if (!former.empty() && !later.empty() &&
            bytesOf(texts_.base, former.back().lines) == bytesOf(texts_.ours, place.lines) &&
            indentOf(texts_.theirs, later.back()) == indentOf(texts_.ours, place)) {
            return linesOf(texts_.theirs, later.back().lines, lineEnd_);
        }
        const char *value = velDescribe(trees_.theirs, step.theirs).value;
        const SourceText statement(bytesOf(texts_.ours, place.lines));
        return spliced(statement, valueSplice(statement, {0, statement.lineCount()},
                                              value != nullptr ? value : ""));
    }

    /// The text of THEIRS: its own lines if they are in one place, otherwise lines
    /// made from the data.
    [[nodiscard]] std::string theirsText(const MergeStep &step) const
    {
        const std::vector<Place> &places = inTheirs_.of(step.theirs);
        if (places.empty()) {
            return "";
        }
        if (places.size() > 1 && !isParam(trees_.theirs, step.theirs)) {
            return blockText(trees_.theirs, step.theirs, indentOf(texts_.theirs, places.back()),
                             lineEnd_);
        }
        LineRange lines = places.back().lines;
        if (step.ours == nullptr) {
            const std::size_t first = firstCommentAbove(lines.first);
            lines.count += lines.first - first;
            lines.first = first;
        }
        return linesOf(texts_.theirs, lines, lineEnd_);
    }

    /// Comments directly above a new statement are copied with it, unless OURS
    /// already has them.
    [[nodiscard]] std::size_t firstCommentAbove(std::size_t line) const
    {
        while (line > 0 && isCommentLine(texts_.theirs.line(line - 1)) &&
               !commentsOfOurs_.contains(velTrim(texts_.theirs.line(line - 1)))) {
            --line;
        }
        return line;
    }

    const MergeTexts &texts_;
    const MergeTrees &trees_;
    std::string lineEnd_;
    StatementPlaces inBase_;
    StatementPlaces inOurs_;
    StatementPlaces inTheirs_;
    std::unordered_set<std::string_view> commentsOfOurs_;
    std::vector<LineEdit> edits_;
};

/// Joins pieces of text. Each piece begins on a new line.
class LineJoiner
{
public:
    explicit LineJoiner(std::string_view lineEnd) : lineEnd_(lineEnd) {}

    void add(std::string_view text)
    {
        if (text.empty()) {
            return;
        }
        if (!bytes_.empty() && bytes_.back() != '\n') {
            bytes_ += lineEnd_;
        }
        bytes_ += text;
    }

    void addConflict(std::string_view ours, std::string_view theirs, std::size_t markerSize)
    {
        add(std::string(markerSize, '<') + " ours" + lineEnd_);
        add(ours);
        add(std::string(markerSize, '=') + lineEnd_);
        add(theirs);
        add(std::string(markerSize, '>') + " theirs" + lineEnd_);
    }

    [[nodiscard]] std::string take() { return std::move(bytes_); }

private:
    std::string bytes_;
    std::string lineEnd_;
};

/// The comments of a text, without the white space around them.
std::vector<std::string> commentsOf(const SourceText &source)
{
    std::vector<std::string> comments;
    Statement statement;
    for (std::size_t line = 0; line < source.lineCount(); line += statement.lines.count) {
        readStatement(source, line, Positions::Skip, &statement);
        if (statement.comment < statement.text.size()) {
            comments.push_back(statement.text.substr(statement.comment));
        }
    }
    return comments;
}

} // namespace

MergedText::MergedText(const MergeTexts &texts, const MergeTrees &trees,
                       const std::vector<MergeStep> &steps)
    : ours_(texts.ours), edits_(Editor(texts, trees, steps).edits(steps))
{
}

std::string MergedText::render(Resolution resolution, std::size_t markerSize) const
{
    LineJoiner text(ours_.lineEnd(0));
    std::size_t line = 0;
    for (const LineEdit &edit : edits_) {
        text.add(bytesOf(ours_, {line, edit.first - line}));
        line = edit.first + edit.count;
        if (edit.isConflict && resolution == Resolution::Marked) {
            text.addConflict(edit.ours, edit.theirs, markerSize);
        } else {
            text.add(edit.isConflict && resolution == Resolution::Ours ? edit.ours : edit.theirs);
        }
    }
    text.add(bytesOf(ours_, {line, ours_.lineCount() - line}));
    return byteOrderMarkOf(ours_) + text.take();
}

std::string wholeConflict(const SourceText &ours, const SourceText &theirs, std::size_t markerSize)
{
    LineJoiner text(ours.lineEnd(0));
    text.addConflict(allLinesOf(ours), allLinesOf(theirs), markerSize);
    return byteOrderMarkOf(ours) + text.take();
}

std::size_t countLostComments(const SourceText &base, const SourceText &theirs,
                              const SourceText &result)
{
    std::unordered_set<std::string> known;
    for (const SourceText *text : {&base, &result}) {
        for (std::string &comment : commentsOf(*text)) {
            known.insert(std::move(comment));
        }
    }
    const std::vector<std::string> comments = commentsOf(theirs);
    return static_cast<std::size_t>(
        std::count_if(comments.begin(), comments.end(),
                      [&](const std::string &comment) { return !known.contains(comment); }));
}

} // namespace veltext
