// Records read from texts, for a Perl side that gives nothing else.
//
// The packages that ship give records. Packages of a user's own may give only the
// texts that the bridge asks for in any case; these functions, and nothing else, take
// such texts apart, by their form and never by their words.
#pragma once

#include "velparser/api/velRecords.h"

#include <string_view>

namespace velparser {

/// Of "PATH: sentence [identifier]". In a line that does not begin with a path, this
/// is empty: something failed. An identifier begins with a letter and holds small letters and hyphens:
/// brackets around anything else belong to the sentence.
[[nodiscard]] Finding findingFromLine(std::string_view line);

/// Of a text with one on each line.
[[nodiscard]] std::vector<Finding> findingsFromText(std::string_view text);

/// Of "PATH: change"; the kind is Unknown. The path is empty in a line without one.
[[nodiscard]] UpgradeChange changeFromLine(std::string_view line);

/// Of "Name = text". A line without " = " is all name.
[[nodiscard]] RuleField fieldFromLine(std::string_view line);

/// The lines of a text; what follows the last line feed is one if it is not empty.
[[nodiscard]] std::vector<std::string_view> linesOf(std::string_view text);

} // namespace velparser
