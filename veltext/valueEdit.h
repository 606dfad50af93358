// Putting a new value into the text of a statement.
#pragma once

#include "veltext/statementTree.h"

#include <string>
#include <string_view>

namespace veltext {

/// Why no line of a file can hold the value so that it reads back the same;
/// empty if one can.
[[nodiscard]] std::string storageFault(std::string_view value);

/// What a line needs after a value so that its final backslash does not continue
/// the line: an empty comment. Empty for other values.
[[nodiscard]] std::string_view guardOf(std::string_view value);

/// Bytes of a source, and what takes their place.
struct Splice
{
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
};

/// Replaces the value of the parameter statement on these lines. Nothing but
/// the value's own characters changes: name, blanks, remark and line ends stay.
/// A value that was continued over several lines is wrapped again as those
/// were: pieces that stay the same keep their lines, others get the indent and
/// at most the length of the old ones, or one list entry each where they held
/// one each.
[[nodiscard]] Splice valueSplice(const SourceText &source, LineRange lines, std::string_view value);

/// Replaces the name of the parameter, or the type of the object, that the
/// statement on these lines states; of "TYPE:Name" the type is taken, the name
/// in the text stays.
[[nodiscard]] Splice componentSplice(const SourceText &source, LineRange lines,
                                     std::string_view component);

/// The bytes of the source with the splice made.
[[nodiscard]] std::string spliced(const SourceText &source, const Splice &splice);

} // namespace veltext
