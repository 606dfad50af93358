// Finds the line at which the parser refuses a text.
//
// The database says what is wrong, but not in which line. After it has refused a
// text, these functions parse the text again, line by line.
#pragma once

#include "veltext/sourceText.h"

#include <cstddef>
#include <optional>
#include <string>

struct velHandle;

namespace veltext {

/// A mistake in a text.
struct TextFault
{
    std::size_t line = 0;     ///< counted from 1; 0 if the whole text is wrong
    std::string message;      ///< the message of the database, or a sentence of ours
    bool isExplained = false; ///< the message is a sentence of ours
};

/// Parses the text into `handle`, which may already have the rule libraries, and
/// gives the first mistake; nothing if the text is correct. A missing END is
/// reported at the header of the innermost open block.
[[nodiscard]] std::optional<TextFault> findFault(const SourceText &text, velHandle *handle);

/// "FILE:LINE: message"; "FILE: message" if the line is 0.
[[nodiscard]] std::string placed(const std::string &file, const TextFault &fault);

/// The complete message after the file was refused with `message`: file and line
/// follow it if there is a mistake in the text, and a sentence of ours follows on
/// a second line if there is one. The file is parsed after the rule libraries of
/// the environment, as the editor does it.
[[nodiscard]] std::string explainRefusal(const std::string &file, const std::string &message);

} // namespace veltext
