// The exception of the text engine.
//
// A function that throws does not change its arguments, its object or any file,
// unless its own comment says otherwise. The message is for the user: it names
// the file or the path, and the reason.
#pragma once

#include "common/error.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace veltext {

/// All functions of this folder throw this class only, apart from bad_alloc.
class Error : public velEditor::error
{
public:
    /// A complete message, without a line.
    explicit Error(const std::string &message) : velEditor::error(message), sentence_(message) {}
    /// "FILE:LINE: sentence"; "FILE: sentence" if `line` is 0.
    Error(const std::string &file, std::size_t line, const std::string &sentence);

    /// The message without file and line.
    [[nodiscard]] const std::string &sentence() const { return sentence_; }
    /// The line with the error, counted from 1; 0 if there is no such line.
    [[nodiscard]] std::size_t line() const { return line_; }

private:
    std::string sentence_;
    std::size_t line_ = 0;
};

/// "FILE:LINE: ", the beginning of a message about a place in a file; "FILE: " if
/// `line` is 0.
[[nodiscard]] std::string placeText(const std::string &file, std::size_t line);

/// "FILE:LINE: ", the beginning of a finding. It always has a number: 0 means that no line
/// is known.
[[nodiscard]] std::string findingPlace(std::string_view file, std::size_t line);

/// Throws an Error with the message that a database call returned, after "WHERE: "
/// unless `where` is empty. Does nothing for null, which means success.
void require(const char *message, const std::string &where = {});

/// An Error with the system's text for an error number.
[[nodiscard]] Error systemError(const std::string &what, int error);

} // namespace veltext
