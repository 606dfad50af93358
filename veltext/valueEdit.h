// Puts a new value into the text of a statement.
#pragma once

#include "veltext/statementTree.h"

#include <string>
#include <string_view>

namespace veltext {

/// Why a file cannot hold the value so that reading gives the same value again;
/// empty if it can. A sentence for the user.
[[nodiscard]] std::string storageFault(std::string_view value);

/// The empty comment that a line needs after a value that ends in a backslash, so
/// that it does not continue the line. Empty for other values.
[[nodiscard]] std::string_view guardOf(std::string_view value);

/// A range of bytes of a source, and the text that replaces them.
struct Splice
{
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
};

/// Replaces the value of the parameter statement on these lines. Only the
/// characters of the value change: name, blanks, comment and line ends stay.
/// A value over several lines is wrapped in the same way again: unchanged pieces
/// keep their lines; new lines get the indent and at most the length of the old
/// lines, or one list entry each if the old lines had one each.
[[nodiscard]] Splice valueSplice(const SourceText &source, LineRange lines, std::string_view value);

/// Replaces the name of the parameter, or the type of the object, in the statement
/// on these lines. If `component` is "TYPE:Name", only the type is used; the name
/// in the text stays.
[[nodiscard]] Splice componentSplice(const SourceText &source, LineRange lines,
                                     std::string_view component);

/// The bytes of the source after the splice.
[[nodiscard]] std::string spliced(const SourceText &source, const Splice &splice);

} // namespace veltext
