// Formats findings and changes as lines and JSON, and compares findings.
#pragma once

#include "velparser/api/velparser.h"

#include <string>
#include <string_view>
#include <vector>

namespace veltool {

using velparser::Finding;

/// The findings of `after` that are not in `before`. A finding that occurs twice
/// in `after` and once in `before` is new once.
[[nodiscard]] std::vector<Finding> newFindings(std::vector<Finding> before,
                                               const std::vector<Finding> &after);

/// "FILE:LINE: PATH: sentence [identifier]" and a line feed.
[[nodiscard]] std::string findingLine(std::string_view file, std::size_t line,
                                      const Finding &finding);

/// "FILE:LINE: PATH: change" and a line feed.
[[nodiscard]] std::string changeLine(std::string_view file, std::size_t line,
                                     const velparser::UpgradeChange &change);

/// "FILE:LINE: [NUMBER] PATH: change" and a line feed.
[[nodiscard]] std::string numberedChangeLine(std::string_view file, std::size_t line,
                                             std::size_t number,
                                             const velparser::UpgradeChange &change);

/// {"file":…,"line":…,"path":…,"message":…,"id":…}.
[[nodiscard]] std::string findingJson(std::string_view file, std::size_t line,
                                      const Finding &finding);

/// {"file":…,"line":…,"path":…,"message":…,"number":…}.
[[nodiscard]] std::string changeJson(std::string_view file, std::size_t line, std::size_t number,
                                     const velparser::UpgradeChange &change);

} // namespace veltool
