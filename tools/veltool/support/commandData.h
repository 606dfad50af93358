// Reads command data into a separate database, without Perl.
#pragma once

#include "tools/veltool/support/failure.h"
#include "velapilt/src/velapilt.h"
#include "veltext/sourceText.h"

#include <cstdint>
#include <string>

namespace veltool {

/// A command file, or a container (def or res file).
enum class FileKind { Text, Container };

/// Decides by the first bytes of a file; more bytes do no harm.
[[nodiscard]] FileKind kindOf(std::string_view firstBytes);

/// Decides by the first bytes of a regular file; Text for everything else.
[[nodiscard]] FileKind kindOfFile(const std::string &file);

/// The refusal of a command that would have to change a def or res file.
[[nodiscard]] Refusal containerRefusal(const std::string &file);

/// Whether the rule libraries are read before a file.
enum class Libraries { Skip, Read };

/// A new handle. Throws bad_alloc, and a Failure if the libraries cannot be read.
[[nodiscard]] velHandlePtr newHandle(Libraries libraries = Libraries::Skip);

/// Reads a file, or standard input for "-", into a new handle: a command file, or
/// the command data of a def or res file. Throws a Failure that names the file, and
/// the line of a mistake in it.
[[nodiscard]] velHandlePtr loadFile(const std::string &file, Libraries libraries = Libraries::Skip);

/// The text of a command file, for commands that need its lines. A def or res file
/// gives the lines of its command data. Throws a Failure.
[[nodiscard]] veltext::SourceText readText(const std::string &file);

/// Parses a text. Messages name `file`. Throws a Failure.
void parseText(velHandle *handle, const veltext::SourceText &text, const std::string &file);

/// Throws the Failure for a text that the parser refused with `message`: adds the
/// line. Libraries::Read means that the libraries were read before the text.
[[noreturn]] void throwParseFailure(const veltext::SourceText &text, const std::string &file,
                                    const std::string &message,
                                    Libraries libraries = Libraries::Skip);

/// The deepest nesting that a command accepts if it writes an indent or a path for
/// each level: its output grows with the square of the depth.
inline constexpr std::int32_t mostLevels = 10'000;

/// Throws a Failure if the parsed text is nested deeper than `mostLevels`.
void requireShallow(const velHandle *handle, const std::string &file);

/// Throws the Failure of `requireShallow`.
[[noreturn]] void throwTooDeep(const std::string &file);

} // namespace veltool
