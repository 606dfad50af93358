// What the rules say, as records: findings, changes of an upgrade, fields of a rule.
//
// The bridge takes them from Perl as records and hands them on as records. Nobody has
// to read a text to know what it is about; lineOf makes the texts.
#pragma once

#include <string>
#include <vector>

namespace velparser {

/// Something that is wrong with the command data, or with a rule.
struct Finding
{
    std::string path;       ///< empty where it is about no item: something failed
    std::string identifier; ///< the stable word for its kind (docs/findings.md), or empty
    std::string text;       ///< the sentence; the whole message where something failed
    /// Paths of other items that it concerns, such as the parameter whose value makes
    /// another one required.
    std::vector<std::string> related = {};

    bool operator==(const Finding &) const = default;
};

/// What an upgrade did to one item. kindOf() in perlRecords.cpp has the Perl words.
enum class ChangeKind {
    Unknown, ///< a Perl side that gives no records: only path and text are known
    RenamedParameter,
    RemovedParameter,
    AddedParameter,
    ChangedValue,
    MovedParameter,
    RenamedObject, ///< gave it another type
    RemovedObject,
    SetVersion, ///< stated the version that the data is in now
};

/// One change of the data by an upgrade. The changes of an upgrade follow each other:
/// a path is the one that the item has after all earlier changes.
struct UpgradeChange
{
    ChangeKind kind = ChangeKind::Unknown;
    std::string path;
    std::string newPath;  ///< of what was renamed or moved, else empty
    std::string oldValue; ///< of a value that was changed or removed, or a version; else empty
    std::string newValue; ///< of a value that was changed or added, or a version; else empty
    std::string text;     ///< the change in words

    bool operator==(const UpgradeChange &) const = default;
};

/// One field of a rule: "Units" and "kg s^-1".
struct RuleField
{
    std::string name;
    std::string text;
    bool inTip = false; ///< the tip of a row shows it (VEL::Rules::Fields)

    bool operator==(const RuleField &) const = default;
};

/// "PATH: sentence [identifier]", without what is empty.
[[nodiscard]] std::string lineOf(const Finding &finding);

/// "PATH: change".
[[nodiscard]] std::string lineOf(const UpgradeChange &change);

} // namespace velparser
