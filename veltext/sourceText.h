// The bytes of a command file and its lines.
//
// A line is what comes before a line feed, or after the last one; carriage
// returns belong to it. The parser sees a line up to its first NUL only, the
// bytes keep all of it. A byte order mark before the first line belongs to the
// bytes, but to no line.
#pragma once

#include "velapilt/src/velArray.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veltext {

/// A text and where its lines are. It owns its bytes; views of lines live as long.
class SourceText
{
public:
    /// Takes any bytes, also none.
    explicit SourceText(std::string bytes);

    /// All bytes, a byte order mark included.
    [[nodiscard]] const std::string &bytes() const { return bytes_; }
    /// Whether the bytes begin with the UTF-8 form of U+FEFF.
    [[nodiscard]] bool hasByteOrderMark() const { return firstLine_ > 0; }
    /// Lines are counted from 0; an empty text has none.
    [[nodiscard]] std::size_t lineCount() const { return starts_.size(); }

    /// Position of a line's first byte; of the end of the text for lineCount().
    [[nodiscard]] std::size_t lineStart(std::size_t line) const;
    /// Without its line feed.
    [[nodiscard]] std::string_view line(std::size_t line) const;
    /// As the parser sees it.
    [[nodiscard]] std::string_view parsedLine(std::size_t line) const;

    /// "\r\n" if the line ends so, else "\n", also for a line that is not there.
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

/// How many first bytes of a file tell whether it is a container.
inline constexpr std::size_t containerStartLength = 5;

/// Whether a file that begins with these bytes is a def or res file, whose
/// command data is not at hand as text.
[[nodiscard]] bool isContainer(std::string_view bytes);

/// Length of the byte order mark at the start of the bytes, 0 without one.
[[nodiscard]] std::size_t byteOrderMarkLength(std::string_view bytes);

/// The text of a regular file; nothing if it is none or cannot be read.
[[nodiscard]] std::optional<SourceText> readSource(const std::string &file);

} // namespace veltext
