// The bytes of a command file and its lines.
//
// A line is what stands before a line feed, or behind the last one; carriage
// returns belong to it. The parser sees a line up to its first NUL only, the
// bytes keep all of it.
#pragma once

#include "velapilt/src/velArray.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veltool {

/// The name under which standard input is read.
inline constexpr const char *standardInput = "-";

/// All bytes of a file, or of standard input for "-". Throws a Failure.
[[nodiscard]] std::string readBytes(const std::string &file);

class SourceText
{
public:
    explicit SourceText(std::string bytes);

    [[nodiscard]] const std::string &bytes() const { return bytes_; }
    [[nodiscard]] std::size_t lineCount() const { return starts_.size(); }

    /// Position of a line's first byte; of the end of the text for lineCount().
    [[nodiscard]] std::size_t lineStart(std::size_t line) const;
    /// Without its line feed.
    [[nodiscard]] std::string_view line(std::size_t line) const;
    /// As the parser sees it.
    [[nodiscard]] std::string_view parsedLine(std::size_t line) const;

    /// The lines as the database takes them. Throws bad_alloc.
    [[nodiscard]] velArray parsedLines() const;

private:
    std::string bytes_;
    std::vector<std::size_t> starts_;
};

} // namespace veltool
