// Checks, upgrades and explains command data by the rules, through the bridge.
//
// One session of the bridge loads the interpreter and the rule libraries once. The
// command data of each text replaces that of the text before.
#pragma once

#include "tools/veltool/support/finding.h"
#include "tools/veltool/support/programPlace.h"
#include "veltext/sourceText.h"
#include "veltext/treeData.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace veltool {

/// The result of an upgrade of a text.
struct Upgrade
{
    std::vector<velparser::UpgradeChange> changes; ///< empty if the text is up to date
    veltext::TreeData result;                      ///< without data that only the libraries state
};

/// The result of a check of a text.
struct Findings
{
    std::vector<Finding> findings;
    std::vector<velparser::UpgradeChange> changes; ///< made by the upgrade before the check
};

class RuleCheck
{
public:
    /// Throws a Failure if the interpreter or the libraries cannot be loaded.
    RuleCheck();

    /// Reports the mistakes in the rules themselves on standard error. Returns the
    /// exit status for them.
    [[nodiscard]] int reportRuleFaults() const;

    // These functions need a text without syntax errors. Messages name `file`. They
    // throw a Failure.

    /// Upgrades the data in memory and validates it, with units and bounds.
    [[nodiscard]] Findings findings(const veltext::SourceText &text, const std::string &file);

    /// Upgrades the data to the current version.
    [[nodiscard]] Upgrade upgrade(const veltext::SourceText &text, const std::string &file);

    /// The rule fields of an object or parameter, which need not exist in the text.
    /// Empty if there is no rule.
    [[nodiscard]] std::vector<velparser::RuleField>
    explain(const veltext::SourceText &text, const std::string &file, const std::string &path);

private:
    void load(const veltext::SourceText &text, const std::string &file);

    Places places_;
    velparser::Session session_;
    std::vector<Finding> faults_;
    std::unordered_set<std::string> libraryPaths_; ///< all paths that the libraries state
};

/// Reads only these libraries, in a separate session, and returns the mistakes in
/// their rules.
[[nodiscard]] std::vector<Finding>
findRuleFaults(const std::vector<veltext::SourceText> &libraries);

} // namespace veltool
