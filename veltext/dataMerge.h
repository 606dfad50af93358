// The three-way merge of loaded data, without a text: what has to change in it.
//
// BASE and THEIRS are texts, OURS is the data of a database. What a merge decides for
// each path is in mergePlan.h. This header does not include the database.
#pragma once

#include "veltext/commandText.h"

#include <optional>
#include <string>
#include <vector>

namespace veltext {

/// An object or parameter of one version.
struct MergeItem
{
    bool isParameter;
    /// The value, or the block of an object; see edit.h.
    std::string text;

    bool operator==(const MergeItem &) const = default;
};

/// A path at which OURS gets what THEIRS has, if the user does not keep OURS.
struct DataMergeStep
{
    std::string path;
    bool isConflict;                 ///< both versions changed it in different ways
    std::optional<MergeItem> ours;   ///< nothing if OURS does not have the path
    std::optional<MergeItem> theirs; ///< nothing if THEIRS does not have it
    /// What OURS has and the item follows in THEIRS: the component of a sibling. Empty
    /// if nothing before the item is in OURS.
    std::string previous;
};

/// The steps. The children of one object come in the order of THEIRS, then those that
/// only OURS has. The database is not changed.
[[nodiscard]] std::vector<DataMergeStep> planDataMerge(const CommandText &base, velHandle *ours,
                                                       const CommandText &theirs);

} // namespace veltext
