// What the text engine throws when it cannot do what it was asked.
//
// A function that throws leaves its arguments, its object and every file as
// they were, unless its own comment says otherwise. The message is for the
// user: it names the file or the path, and the reason.
#pragma once

#include "common/error.h"

#include <cstddef>
#include <string>

namespace veltext {

/// What every function of this folder throws, apart from bad_alloc.
class Error : public velEditor::error
{
public:
    /// A message that is complete; no line is at fault.
    explicit Error(const std::string &message) : velEditor::error(message), sentence_(message) {}
    /// "FILE:LINE: sentence"; `line` is 0 if no line is at fault.
    Error(const std::string &file, std::size_t line, const std::string &sentence);

    /// The message without the file and the line that are at fault.
    [[nodiscard]] const std::string &sentence() const { return sentence_; }
    /// Counted from 1; 0 if no line is at fault.
    [[nodiscard]] std::size_t line() const { return line_; }

private:
    std::string sentence_;
    std::size_t line_ = 0;
};

/// "FILE:LINE: ", with which a message about a place in a file begins; "FILE: "
/// if `line` is 0.
[[nodiscard]] std::string placeText(const std::string &file, std::size_t line);

/// Throws an Error with the message of a database call, with `where` and a colon
/// before it; null passes.
void require(const char *message, const std::string &where = {});

/// An Error with the system's text for an error number.
[[nodiscard]] Error systemError(const std::string &what, int error);

} // namespace veltext
