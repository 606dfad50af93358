// Records read from texts, for Perl code that gives only texts.
//
// The packages that ship give records. A user's own packages may give only texts. Only
// these functions read such texts. They use the form of the texts, never the words in
// them.
#pragma once

#include "velparser/api/velRecords.h"

#include <string_view>

namespace velparser {

/// From "PATH: sentence [identifier]". If a line does not begin with a path, the path is
/// empty: something failed. An identifier begins with a letter and consists of small
/// letters and hyphens; other brackets belong to the sentence.
[[nodiscard]] Finding findingFromLine(std::string_view line);

/// From a text with one finding on each line.
[[nodiscard]] std::vector<Finding> findingsFromText(std::string_view text);

/// From "PATH: change"; the kind is Unknown. The path is empty if the line has none.
[[nodiscard]] UpgradeChange changeFromLine(std::string_view line);

/// From "Name = text". If a line has no " = ", all of it is the name.
[[nodiscard]] RuleField fieldFromLine(std::string_view line);

/// The lines of a text. If the text does not end in a line feed, its rest is the last line.
[[nodiscard]] std::vector<std::string_view> linesOf(std::string_view text);

} // namespace velparser
