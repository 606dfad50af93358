// What the rules say, as records: findings, changes of an upgrade, fields of a rule.
//
// Perl code gives them to the bridge as records, and the bridge passes them on as records.
// So no program needs to read a text to know what it is about; lineOf makes the texts.
#pragma once

#include <string>
#include <vector>

namespace velparser {

/// Something that is wrong with the command data, or with a rule.
struct Finding
{
    std::string path;       ///< empty if it is not about an item: something failed
    std::string identifier; ///< the stable word for its kind (docs/findings.md), or empty
    std::string text;       ///< the sentence; the whole message if something failed
    /// Paths of other items that it concerns, such as the parameter whose value makes
    /// another one required.
    std::vector<std::string> related = {};

    bool operator==(const Finding &) const = default;
};

/// What an upgrade did to one item. kindOf() in perlRecords.cpp has the Perl words.
enum class ChangeKind {
    Unknown, ///< from Perl code that gives no records: only path and text are known
    RenamedParameter,
    RemovedParameter,
    AddedParameter,
    ChangedValue,
    MovedParameter,
    RenamedObject, ///< gave it another type
    RemovedObject,
    SetVersion, ///< stated the version that the data now has
};

/// One change of the data by an upgrade. The changes are in order, and each path is the
/// one that the item has after all earlier changes.
struct UpgradeChange
{
    ChangeKind kind = ChangeKind::Unknown;
    std::string path;
    std::string newPath;  ///< if something was renamed or moved, otherwise empty
    std::string oldValue; ///< if a value was changed or removed, or a version; otherwise empty
    std::string newValue; ///< if a value was changed or added, or a version; otherwise empty
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

/// "PATH: sentence [identifier]", without the parts that are empty.
[[nodiscard]] std::string lineOf(const Finding &finding);

/// "PATH: change".
[[nodiscard]] std::string lineOf(const UpgradeChange &change);

} // namespace velparser
