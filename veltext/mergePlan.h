// What a three-way merge has to do, by paths.
//
// For each path there are three states: in BASE, in OURS and in THEIRS. Where
// one side left it as it was in BASE, the other side's state is the result;
// where both did the same, that is it; all else is a conflict. An object that
// both sides have is looked into, child by child; one that a side deleted is
// compared as a whole: what the other side has changed in it, or added, is not lost.
#pragma once

#include "velapilt/src/velapilt.h"

#include <string>
#include <vector>

namespace veltext {

/// What a step does to OURS.
enum class StepKind {
    Take,     ///< OURS becomes what THEIRS is
    Conflict, ///< both sides changed it, and differently
};

/// One path at which the result is not, or may not be, what OURS has. The
/// nodes belong to the trees, which must not change while they are used.
struct MergeStep
{
    StepKind kind;
    std::string path;
    const velNode *base;       ///< null where it is not there
    const velNode *ours;       ///< likewise
    const velNode *theirs;     ///< likewise
    const velNode *oursParent; ///< the object of OURS in which it stands, or will
    /// The child of OURS behind which it stands in THEIRS; null where none of
    /// those before it is in OURS.
    const velNode *behind;
};

/// The three versions as data; not owned.
struct MergeTrees
{
    velHandle *base;
    velHandle *ours;
    velHandle *theirs;
};

/// The steps, objects before what is in them; those of one object in the order
/// of THEIRS, behind them those about what only OURS has.
[[nodiscard]] std::vector<MergeStep> planMerge(const MergeTrees &trees);

/// Gives the tree of OURS what THEIRS has at a path. Throws an Error.
void takeTheirs(const MergeTrees &trees, const std::string &path);

} // namespace veltext
