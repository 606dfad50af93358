// Putting a new value into the text of a statement.
#pragma once

#include "tools/veltool/statement.h"

#include <string>
#include <string_view>

namespace veltool {

/// Throws a Failure that says why, when no line of a file can hold the value
/// so that it reads back the same.
void requireStorable(std::string_view value);

/// The bytes of the source with the value of the parameter statement on these
/// lines replaced. Nothing but the value's own characters changes: name,
/// blanks, remark and line ends stay. A value that was continued over several
/// lines is wrapped again as those were: pieces that stay the same keep their
/// lines, others get the indent and at most the length of the old ones, or one
/// list entry each where they held one each.
[[nodiscard]] std::string replaceValue(const SourceText &source, LineRange lines,
                                       std::string_view value);

} // namespace veltool
