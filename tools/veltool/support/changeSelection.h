// Makes some of the changes of an upgrade, and leaves others out.
//
// A change is made only where the data is as it would be after all changes before it.
// So a change that needs one that is left out is left out too.
#pragma once

#include "velapilt/src/velapilt.h"
#include "velparser/api/velRecords.h"

#include <cstddef>
#include <set>
#include <vector>

namespace veltool {

/// A change that is left out because it needs another one that is.
struct Dependence
{
    std::size_t number; ///< counted from 1
    std::size_t needed; ///< the number of the other one, which comes before it
};

struct ChangeSelection
{
    std::vector<std::size_t> made; ///< the numbers of the changes, counted from 1
    std::vector<Dependence> dependent;
};

/// Makes the changes in the data that they were found for, except those with these
/// numbers and what depends on them. Throws a Failure if a change cannot be made for
/// another reason, or has no record of what it does; the data may then be changed.
[[nodiscard]] ChangeSelection makeChanges(velHandle *data,
                                          const std::vector<velparser::UpgradeChange> &changes,
                                          const std::set<std::size_t> &except);

} // namespace veltool
