// What the parser refuses in a text, and where.
//
// The database reports what is wrong, but not on which line. The programs ask
// here after a text was refused: the text is parsed again, line by line.
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
    std::size_t line = 0;     ///< counted from 1; 0 if the text as a whole is at fault
    std::string message;      ///< the database's, or a sentence that explains it
    bool isExplained = false; ///< the message is such a sentence
};

/// Parses the text into `handle`, which may already hold the rule libraries,
/// and gives the first fault. A missing END is reported at the line that opens
/// the innermost block that is still open. Nothing if the text parses.
[[nodiscard]] std::optional<TextFault> findFault(const SourceText &text, velHandle *handle);

/// "FILE:LINE: message", or "FILE: message" without a line.
[[nodiscard]] std::string placed(const std::string &file, const TextFault &fault);

/// What to report when the file was refused with `message`: that message, with
/// file and line after it if the text is at fault, and with a plain sentence on
/// another line where there is one. The rule libraries that the environment
/// names count as read before the file.
[[nodiscard]] std::string explainRefusal(const std::string &file, const std::string &message);

} // namespace veltext
