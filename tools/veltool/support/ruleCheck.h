// What the rules say of command data, through the bridge.
//
// The bridge has one instance with one database. The interpreter and the rule
// libraries are loaded once; the command data of each text replaces that of
// the one before.
#pragma once

#include "tools/veltool/support/finding.h"
#include "veltext/sourceText.h"
#include "veltext/treeData.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace veltool {

/// What an upgrade does to the data of a text.
struct Upgrade
{
    std::vector<velparser::UpgradeChange> changes; ///< none when up to date
    veltext::TreeData result;                      ///< without what only the libraries state
};

/// What the rules find in the data of a text.
struct Findings
{
    std::vector<Finding> findings;
    std::vector<velparser::UpgradeChange> changes; ///< of the upgrade before the check
};

class RuleCheck
{
public:
    /// Throws a Failure when the interpreter or the libraries cannot be loaded.
    RuleCheck();

    /// Says on standard error what is wrong with the rules themselves. Gives
    /// the status for that.
    [[nodiscard]] int reportRuleFaults() const;

    // Each of these takes a text that parses; `file` is named in messages.
    // Throws a Failure.

    /// Brings the data up to the current version in memory and validates it,
    /// units and bounds included.
    [[nodiscard]] Findings findings(const veltext::SourceText &text, const std::string &file);

    /// Brings the data up to the current version.
    [[nodiscard]] Upgrade upgrade(const veltext::SourceText &text, const std::string &file);

    /// What the rules say of an object or parameter of the text, there or not;
    /// no fields where there is no rule.
    [[nodiscard]] std::vector<velparser::RuleField>
    explain(const veltext::SourceText &text, const std::string &file, const std::string &path);

private:
    /// What the libraries have put at the top level.
    struct LibraryObject
    {
        std::string path;
        velStringList lines;
    };

    void keepLibraries();
    void dropUserData() const;
    void load(const veltext::SourceText &text, const std::string &file) const;

    std::vector<Finding> faults_;
    std::vector<LibraryObject> libraries_;
    std::unordered_set<std::string> libraryPaths_; ///< of all that the libraries state
};

/// Reads these libraries and no others, and gives what is wrong with the rules
/// in them. They are in a session of their own.
[[nodiscard]] std::vector<Finding>
findRuleFaults(const std::vector<veltext::SourceText> &libraries);

} // namespace veltool
