// The bytes of a command file and its lines.
//
// A line ends at a line feed or at the end of the text; a carriage return before
// that belongs to the line. The parser reads a line only up to its first NUL; the
// bytes keep everything. A byte order mark at the start belongs to the bytes, but
// not to a line.
#pragma once

#include "velapilt/src/velArray.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veltext {

/// A text and the positions of its lines. It owns its bytes; the views of lines
/// are valid as long as it lives.
class SourceText
{
public:
    /// Takes any bytes; they may be empty.
    explicit SourceText(std::string bytes);

    /// All bytes, a byte order mark included.
    [[nodiscard]] const std::string &bytes() const { return bytes_; }
    /// Whether the bytes begin with U+FEFF in UTF-8.
    [[nodiscard]] bool hasByteOrderMark() const { return firstLine_ > 0; }
    /// Lines are counted from 0; an empty text has none.
    [[nodiscard]] std::size_t lineCount() const { return starts_.size(); }

    /// The position of a line's first byte; for lineCount(), the end of the text.
    [[nodiscard]] std::size_t lineStart(std::size_t line) const;
    /// Without its line feed.
    [[nodiscard]] std::string_view line(std::size_t line) const;
    /// The part of the line that the parser reads.
    [[nodiscard]] std::string_view parsedLine(std::size_t line) const;

    /// "\r\n" if the line ends with it, otherwise "\n", also for a line that does not exist.
    [[nodiscard]] std::string_view lineEnd(std::size_t line) const;

    /// The lines as the database takes them. Throws bad_alloc.
    [[nodiscard]] velArray parsedLines() const;

private:
    std::string bytes_;
    std::size_t firstLine_; ///< where the first line begins
    std::vector<std::size_t> starts_;
};

/// White space at the beginning of a line.
[[nodiscard]] std::string_view leadingBlanks(std::string_view line);

/// How many bytes `isContainer` needs.
inline constexpr std::size_t containerStartLength = 5;

/// Whether a file that begins with these bytes is a container (def or res file).
[[nodiscard]] bool isContainer(std::string_view bytes);

/// The length of the byte order mark at the start of the bytes; 0 without one.
[[nodiscard]] std::size_t byteOrderMarkLength(std::string_view bytes);

/// The text of a regular file; nothing if the file is not regular or cannot be read.
[[nodiscard]] std::optional<SourceText> readSource(const std::string &file);

} // namespace veltext
