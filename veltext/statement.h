// The statements of a VEL text and where they stand.
//
// The database forgets lines; edits that keep a file as its author wrote it
// need them. This reader follows the database's parser:
//
// - a line is trimmed; one that ends in '\' continues on the next, whose text
//   follows directly;
// - the first '#' of the joined text that stands at its beginning or not
//   directly behind a '\' begins a remark, which runs to the statement's end;
// - "&replace " before a statement does not change what it opens or sets;
// - "END" as the whole of the joined text closes a block;
// - otherwise '=' makes a parameter, ':' an object, '>' an action line.
//
// A test holds it against the database on random texts.
#pragma once

#include "veltext/sourceText.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veltext {

/// What makes a statement sweep away what it does not restate.
inline constexpr std::string_view replaceWord = "&replace";

/// What a statement does, by the rules above.
enum class StatementKind {
    Nothing, ///< blank, or a remark only
    Header,
    Parameter,
    End,
    Action,
    Unfinished, ///< the text ends in a continued line, which the parser never takes up
};

/// The lines that a statement takes.
struct LineRange
{
    std::size_t first = 0;
    std::size_t count = 0;
};

/// One statement, joined from its lines.
struct Statement
{
    LineRange lines;
    StatementKind kind = StatementKind::Nothing;
    std::string text;       ///< joined, the remark included
    std::size_t remark = 0; ///< where the remark begins in `text`, its size if there is none
    std::string component;  ///< "TYPE:Name", "TYPE" or "Name"; of a header or parameter only
    /// Where each character of `text` stands among the bytes of the source;
    /// kept only when asked for.
    std::vector<std::size_t> positions;
};

/// Whether a statement records where its characters are.
enum class Positions { Skip, Keep };

/// Reads the statement that begins at a line; `statement` is reused.
void readStatement(const SourceText &source, std::size_t firstLine, Positions positions,
                   Statement *statement);

/// The header of an object or, without a name, of a singleton, as a line
/// without indent: "TYPE: Name" or "TYPE:".
[[nodiscard]] std::string headerText(std::string_view type, std::string_view name);

/// How many statements and blank lines of a text carry a remark.
[[nodiscard]] std::size_t countRemarks(const SourceText &source);

} // namespace veltext
