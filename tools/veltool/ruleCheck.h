// Findings of the rules, through the bridge.
//
// The bridge has one instance with one database. The interpreter and the rule
// libraries are loaded once; the command data of each text replaces that of
// the one before.
#pragma once

#include "tools/veltool/sourceText.h"

#include <string>
#include <vector>

namespace veltool {

/// One line that the validator says.
struct Finding
{
    std::string path;    ///< empty where the line names none
    std::string message; ///< "sentence [identifier]"
    std::string id;      ///< empty where there is none

    bool operator==(const Finding &) const = default;
};

[[nodiscard]] Finding parseFinding(const std::string &line);

class RuleCheck
{
public:
    /// Throws a Failure when the interpreter or the libraries cannot be loaded.
    RuleCheck();

    /// Loads the text, brings it up to the current version in memory, and
    /// validates it, units and bounds included. Throws a Failure.
    [[nodiscard]] std::vector<Finding> findings(const SourceText &text);
};

/// Those of `after` that are not among `before`; one that is there twice and
/// was there once is new once.
[[nodiscard]] std::vector<Finding> newFindings(std::vector<Finding> before,
                                               const std::vector<Finding> &after);

} // namespace veltool
