// Replaces the characters of a value in its statement, wrapped as before.
#include "veltext/valueEdit.h"

#include "veltext/error.h"
#include "veltext/valueText.h"

#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velSpace.h"
#include "velapilt/src/velapilt.h"

#include <algorithm>

namespace veltext {

namespace {

/// A part of a statement's text.
struct TextRange
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// The range without the white space at its ends.
TextRange trimmed(std::string_view text, TextRange range)
{
    const std::string_view kept = velTrim(text.substr(range.begin, range.end - range.begin));
    const auto begin = static_cast<std::size_t>(kept.data() - text.data());
    return {begin, begin + kept.size()};
}

TextRange findValue(const Statement &statement)
{
    return trimmed(statement.text, {statement.text.find('=') + 1, statement.comment});
}

/// How the lines of a continued statement look.
struct Style
{
    std::size_t width = 0; ///< of the longest line, including its backslash
    std::string indent;    ///< of the continuation lines
    std::string lineEnd;
    bool entryEach = false; ///< every continued line ends with one list entry
};

std::size_t lineOf(const SourceText &source, LineRange lines, std::size_t position)
{
    std::size_t line = lines.first;
    for (std::size_t end = lines.first + lines.count; end - line > 1;) {
        const std::size_t middle = line + (end - line) / 2;
        if (source.lineStart(middle) > position) {
            end = middle;
        } else {
            line = middle;
        }
    }
    return line;
}

/// Counts parentheses: a comma between parentheses does not separate list entries.
class Parentheses
{
public:
    void pass(char c) { depth_ += c == '(' ? 1 : c == ')' ? -1 : 0; }
    [[nodiscard]] bool areClosed() const { return depth_ == 0; }

private:
    int depth_ = 0;
};

/// Wraps a value over lines as the old value was wrapped.
class Wrapper
{
public:
    Wrapper(const SourceText &source, const Statement &statement, TextRange old)
        : source_(source), statement_(statement)
    {
        for (std::size_t begin = old.begin; begin < old.end;) {
            const std::size_t end = pieceEnd(begin, old.end);
            pieces_.push_back({begin, end});
            begin = end;
        }
        findStyle(old);
    }

    /// The text that replaces the old value from position `*keptUntil` of the
    /// source on.
    std::string wrap(std::string_view value, std::size_t *keptUntil) const
    {
        const std::size_t kept = keptPieces(&value);
        const std::size_t start = statement_.positions[pieces_[kept].begin];
        *keptUntil = start;
        const std::size_t line = lineOf(source_, statement_.lines, start);
        std::size_t column = start - source_.lineStart(line);
        std::string text;
        for (;;) {
            const std::size_t length = nextPiece(value, column);
            text += value.substr(0, length);
            if (length == value.size()) {
                return text;
            }
            text += '\\' + style_.lineEnd + style_.indent;
            column = style_.indent.size();
            value.remove_prefix(length);
        }
    }

private:
    /// The end of the characters that are on the same line as the first one.
    std::size_t pieceEnd(std::size_t begin, std::size_t end) const
    {
        const std::size_t line = lineOf(source_, statement_.lines, statement_.positions[begin]);
        const std::size_t next = source_.lineStart(line + 1);
        std::size_t i = begin;
        while (i < end && statement_.positions[i] < next) {
            ++i;
        }
        return i;
    }

    std::string_view piece(std::size_t i) const
    {
        return std::string_view(statement_.text)
            .substr(pieces_[i].begin, pieces_[i].end - pieces_[i].begin);
    }

    void findStyle(TextRange old)
    {
        const LineRange lines = statement_.lines;
        const std::size_t last = statement_.positions[old.end - 1];
        const std::size_t lastLine = lineOf(source_, lines, last);
        style_.width = last + 1 - source_.lineStart(lastLine);
        for (std::size_t line = lines.first; line < lastLine; ++line) {
            style_.width = std::max(style_.width, velTrimEnd(source_.line(line)).size());
        }
        style_.indent = leadingBlanks(source_.line(lines.first + 1));
        style_.lineEnd = source_.lineEnd(lines.first);
        style_.entryEach = pieces_.size() > 2;
        for (std::size_t i = 0; i + 1 < pieces_.size(); ++i) {
            style_.entryEach = style_.entryEach && isOneEntry(piece(i));
        }
    }

    static bool isOneEntry(std::string_view text)
    {
        text = velTrimEnd(text);
        Parentheses parentheses;
        std::size_t commas = 0;
        for (const char c : text) {
            parentheses.pass(c);
            commas += c == ',' && parentheses.areClosed() ? 1 : 0;
        }
        return text.ends_with(',') && commas == 1;
    }

    /// Removes the old pieces from the beginning of the value, and counts them.
    /// The last piece is never kept, because no '\' follows it. A line cannot
    /// begin with a space of the value: a reader would take it for the indent.
    std::size_t keptPieces(std::string_view *value) const
    {
        std::size_t kept = 0;
        while (kept + 1 < pieces_.size()) {
            const std::string_view old = piece(kept);
            if (value->size() <= old.size() || !value->starts_with(old) ||
                (*value)[old.size()] == ' ') {
                break;
            }
            value->remove_prefix(old.size());
            ++kept;
        }
        return kept;
    }

    std::size_t nextPiece(std::string_view value, std::size_t column) const
    {
        const bool fits = column + value.size() <= style_.width;
        if (fits && !style_.entryEach) {
            return value.size();
        }
        std::size_t best = value.size();
        Parentheses parentheses;
        for (std::size_t i = 1; i < value.size(); ++i) {
            parentheses.pass(value[i - 1]);
            const bool isEntry = endsEntry(value, i) && parentheses.areClosed();
            if (style_.entryEach && isEntry) {
                return i;
            }
            if (fits || !(isEntry || value[i - 1] == ' ')) {
                continue;
            }
            if (column + i + 1 > style_.width && best < value.size()) {
                break;
            }
            best = i;
        }
        return best;
    }

    /// Whether an entry ends before `i`: after a comma and the space that may
    /// follow.
    static bool endsEntry(std::string_view value, std::size_t i)
    {
        if (value[i - 1] == ',') {
            return value[i] != ' ';
        }
        return value[i - 1] == ' ' && i > 1 && value[i - 2] == ',';
    }

    const SourceText &source_;
    const Statement &statement_;
    std::vector<TextRange> pieces_; ///< the pieces of the old value, one for each line
    Style style_;
};

/// Inserts a value if there is none: with one space after the '=', which may
/// exist already, and one space before a comment.
Splice firstValue(const SourceText &source, std::size_t afterEquals, std::string_view value)
{
    const std::string_view rest = std::string_view(source.bytes()).substr(afterEquals);
    const bool hasBlank = rest.starts_with(' ') && !rest.starts_with(" #");
    const std::size_t place = afterEquals + (hasBlank ? 1 : 0);
    return {place, place, (hasBlank ? "" : " ") + std::string(value)};
}

} // namespace

std::string_view guardOf(std::string_view value)
{
    return velLineEnd(value);
}

std::string storageFault(std::string_view value)
{
    const veltext::ValueCheck check = veltext::checkValueText(value);
    const std::string start = "value \"" + std::string(value) + "\" cannot be stored in a file: ";
    switch (check.fault) {
    case veltext::ValueFault::ControlCharacter:
        return start + "control character number " +
               std::to_string(static_cast<unsigned char>(value[check.position])) +
               " is not allowed";
    case veltext::ValueFault::Comment:
        return start + "'#' begins a comment; write \\#";
    case veltext::ValueFault::FinalBackslash:
        return start + "a backslash at its end continues the line; remove it";
    case veltext::ValueFault::WhiteSpace:
        return start + "tabs, blanks at its ends and several blanks in a row are not kept; "
                       "use single blanks";
    case veltext::ValueFault::None:
        break;
    }
    return {};
}

Splice valueSplice(const SourceText &source, LineRange lines, std::string_view value)
{
    Statement statement;
    readStatement(source, lines.first, Positions::Keep, &statement);
    const TextRange old = findValue(statement);
    std::string_view guard = guardOf(value);
    if (statement.comment < statement.text.size()) { // the comment guards it, after a space
        guard = guard.substr(0, old.end == statement.comment ? 1 : 0);
    }
    if (old.begin == old.end) {
        const std::size_t afterEquals = statement.positions[statement.text.find('=')] + 1;
        return firstValue(source, afterEquals, std::string(value).append(guard));
    }
    const std::size_t end = statement.positions[old.end - 1] + 1;
    Splice splice{statement.positions[old.begin], end, std::string(value)};
    if (lines.count > 1 && !value.empty()) {
        splice.text = Wrapper(source, statement, old).wrap(value, &splice.begin);
    }
    splice.text += guard;
    return splice;
}

Splice componentSplice(const SourceText &source, LineRange lines, std::string_view component)
{
    Statement statement;
    readStatement(source, lines.first, Positions::Keep, &statement);
    const std::string_view text = statement.text;
    const bool isParameter = statement.kind == StatementKind::Parameter;
    const std::size_t begin = text.starts_with(replaceWord) ? replaceWord.size() : 0;
    const std::size_t sign = text.find(isParameter ? '=' : ':');
    const TextRange first = trimmed(text, {begin, sign});
    const velComponentParts parts = velSplitComponent(component);
    std::string renamed(parts.type);
    std::size_t end = first.end;
    // A singleton may be written as "TYPE: TYPE". If only the first word were
    // renamed, it would become an object.
    const TextRange name = trimmed(text, {sign + 1, statement.comment});
    if (!isParameter && !parts.hasColon && name.begin < name.end) {
        renamed.append(text, first.end, name.begin - first.end).append(component);
        end = name.end;
    }
    return {statement.positions[first.begin], statement.positions[end - 1] + 1, renamed};
}

std::string spliced(const SourceText &source, const Splice &splice)
{
    std::string bytes = source.bytes().substr(0, splice.begin);
    bytes += splice.text;
    bytes += source.bytes().substr(splice.end);
    return bytes;
}

} // namespace veltext
