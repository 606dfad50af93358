// The statements of a VEL text and their lines.
//
// The database does not keep lines, but edits that keep a file as its author
// wrote it need them. This reader follows the rules of the database's parser:
//
// - a line is trimmed; if it ends in '\', it continues on the next line, and the
//   two texts are joined without a blank;
// - the first '#' of the joined text without a '\' directly before it begins a
//   comment, which ends with the statement;
// - "&replace " before a statement does not change which path it states;
// - "END" as the complete joined text closes a block;
// - otherwise '=' makes a parameter, ':' an object, '>' an action line.
//
// A test compares it with the database on random texts.
#pragma once

#include "veltext/sourceText.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veltext {

/// The word that makes a block replace the former object instead of adding to it.
inline constexpr std::string_view replaceWord = "&replace";

/// What a statement does, by the rules above.
enum class StatementKind {
    Nothing, ///< blank, or only a comment
    Header,
    Parameter,
    End,
    Action,
    Unfinished, ///< the text ends in a continued line, which the parser ignores
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
    std::string text;        ///< joined, with the comment
    std::size_t comment = 0; ///< where the comment begins in `text`; its size without one
    std::string component;   ///< "TYPE:Name", "TYPE" or "Name"; of a header or parameter only
    /// The position of each character of `text` in the bytes of the source; empty
    /// with Positions::Skip.
    std::vector<std::size_t> positions;
};

/// Whether a statement records the positions of its characters.
enum class Positions { Skip, Keep };

/// Reads the statement that begins at `firstLine` into `statement`, whose memory
/// is reused.
void readStatement(const SourceText &source, std::size_t firstLine, Positions positions,
                   Statement *statement);

/// The header line of an object, "TYPE: Name", or with an empty name of a
/// singleton, "TYPE:". Without indent.
[[nodiscard]] std::string headerText(std::string_view type, std::string_view name);

/// The number of comments in a text. A comment on continued lines counts once.
[[nodiscard]] std::size_t countComments(const SourceText &source);

} // namespace veltext
