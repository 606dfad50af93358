// Command data in a database of its own, without Perl.
#pragma once

#include "tools/veltool/support/failure.h"
#include "velapilt/src/velapilt.h"
#include "veltext/sourceText.h"

#include <cstdint>
#include <string>

namespace veltool {

/// What a file holds, by its first bytes.
enum class FileKind { Text, Container };

/// By the first bytes of a file, or all of them.
[[nodiscard]] FileKind kindOf(std::string_view firstBytes);

/// Of a regular file; Text for everything else.
[[nodiscard]] FileKind kindOfFile(const std::string &file);

/// What a command says that would have to change a def or res file.
[[nodiscard]] Refusal containerRefusal(const std::string &file);

/// Whether the rule libraries are read before a file.
enum class Libraries { Skip, Read };

/// A new handle. Throws bad_alloc, and a Failure when the libraries cannot be
/// read.
[[nodiscard]] velHandlePtr newHandle(Libraries libraries = Libraries::Skip);

/// Reads a file, or standard input for "-", into a new handle: a VEL text as
/// it stands, a def or res file by its command data. Throws a Failure that
/// names the file, and the line where one is at fault.
[[nodiscard]] velHandlePtr loadFile(const std::string &file, Libraries libraries = Libraries::Skip);

/// The text of a VEL file, for commands that need its lines. A def or res file
/// gives the lines of its command data. Throws a Failure.
[[nodiscard]] veltext::SourceText readText(const std::string &file);

/// Parses a text; `file` is named in messages. Throws a Failure.
void parseText(velHandle *handle, const veltext::SourceText &text, const std::string &file);

/// Throws the Failure for a text that was refused with `message`: it names the
/// line at fault. With Libraries::Read the libraries were read before the text.
[[noreturn]] void throwParseFailure(const veltext::SourceText &text, const std::string &file,
                                    const std::string &message,
                                    Libraries libraries = Libraries::Skip);

/// The most levels that objects may nest where a command writes an indent or a
/// path for each: what it writes grows with the square of the levels.
inline constexpr std::int32_t mostLevels = 10'000;

/// Throws a Failure if the text that was parsed nests deeper than that.
void requireShallow(const velHandle *handle, const std::string &file);

/// Throws that Failure.
[[noreturn]] void throwTooDeep(const std::string &file);

} // namespace veltool
