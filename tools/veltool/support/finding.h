// A finding: one line that the rules have to say of command data.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace veltool {

struct Finding
{
    std::string path;    ///< empty where the line names none: something failed
    std::string message; ///< the sentence, without path and identifier
    std::string id;      ///< empty where there is none

    bool operator==(const Finding &) const = default;
};

/// From "PATH: sentence [identifier]".
[[nodiscard]] Finding parseFinding(const std::string &line);

/// Of a text with one on each line.
[[nodiscard]] std::vector<Finding> parseFindings(const char *text);

/// Those of `after` that are not among `before`; one that is there twice and
/// was there once is new once.
[[nodiscard]] std::vector<Finding> newFindings(std::vector<Finding> before,
                                               const std::vector<Finding> &after);

/// "FILE:LINE: PATH: sentence [identifier]" and a line feed.
[[nodiscard]] std::string findingLine(std::string_view file, std::size_t line,
                                      const Finding &finding);

/// {"file":…,"line":…,"path":…,"message":…,"id":…}.
[[nodiscard]] std::string findingJson(std::string_view file, std::size_t line,
                                      const Finding &finding);

} // namespace veltool
