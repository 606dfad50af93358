// The plan of a three-way merge: one step for each path that may change.
//
// Each path has three states: in BASE, in OURS and in THEIRS. If one side did
// not change the state of BASE, the result is the state of the other side. If
// both sides made the same change, the result is that change. Everything else is
// a conflict. Objects that both sides have are compared child by child. An object
// that one side deleted is compared as a whole, so that what the other side
// changed or added in it is not lost.
#pragma once

#include "velapilt/src/velapilt.h"

#include <string>
#include <vector>

namespace veltext {

/// What a step does to OURS.
enum class StepKind {
    Take,     ///< OURS gets the state of THEIRS
    Conflict, ///< both sides changed it in different ways
};

/// One path at which the result is, or may be, different from OURS. The nodes
/// belong to the trees, which must not change while the step is used.
struct MergeStep
{
    StepKind kind;
    std::string path;
    const velNode *base;       ///< null if BASE does not have the path
    const velNode *ours;       ///< null if OURS does not have it
    const velNode *theirs;     ///< null if THEIRS does not have it
    const velNode *oursParent; ///< the object of OURS that contains it, or will
    /// The child of OURS that it follows in THEIRS; null if no child before it
    /// is in OURS.
    const velNode *previous;
};

/// The data of the three versions; not owned.
struct MergeTrees
{
    velHandle *base;
    velHandle *ours;
    velHandle *theirs;
};

/// The steps. An object comes before its contents; the children of one object
/// come in the order of THEIRS, then those that only OURS has.
[[nodiscard]] std::vector<MergeStep> planMerge(const MergeTrees &trees);

/// Copies what THEIRS has at a path into the tree of OURS. Throws an Error.
void takeTheirs(const MergeTrees &trees, const std::string &path);

} // namespace veltext
