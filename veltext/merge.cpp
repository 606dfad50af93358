// The whole of a merge.
//
// 1. What is the same byte for byte needs no comparison.
// 2. The trees say what is to be done and what is in conflict.
// 3. The text of OURS is edited, nothing else.
// 4. Read again, with each side in place of the conflicts, it gives the trees
//    that are wanted; else all of the file is one conflict.
#include "veltext/mergeText.h"
#include "veltext/veltext.h"

namespace veltext {

namespace {

/// Why a step is a conflict.
std::string reasonOf(const MergeStep &step)
{
    if (!step.theirs)
        return "changed in ours, deleted in theirs";
    if (!step.ours)
        return "deleted in ours, changed in theirs";
    return step.base ? "changed on both sides" : "added on both sides, not the same";
}

std::vector<MergeConflict> conflictsOf(const std::vector<MergeStep> &steps)
{
    std::vector<MergeConflict> conflicts;
    for (const MergeStep &step : steps) {
        if (step.kind == StepKind::Conflict)
            conflicts.push_back({step.path, reasonOf(step)});
    }
    return conflicts;
}

/// Whether the text parses, and holds what the tree does.
bool holds(const std::string &bytes, velHandle *tree)
{
    try {
        return haveSameData(CommandText(bytes).tree(), tree);
    } catch (const Error &) {
        return false;
    }
}

/// Gives whether there is any step of this kind.
bool take(const std::vector<MergeStep> &steps, StepKind kind, const MergeTrees &trees)
{
    bool isAny = false;
    for (const MergeStep &step : steps) {
        if (step.kind != kind)
            continue;
        takeTheirs(trees, step.path);
        isAny = true;
    }
    return isAny;
}

/// Changes the tree of OURS: first by what is clear, then by what is not.
bool isAsWanted(const MergedText &merged, const MergeTrees &trees,
                const std::vector<MergeStep> &steps)
{
    if (steps.empty())
        return true;
    take(steps, StepKind::Take, trees);
    if (!holds(merged.render(Resolution::Ours), trees.ours))
        return false;
    return !take(steps, StepKind::Conflict, trees) ||
           holds(merged.render(Resolution::Theirs), trees.ours);
}

} // namespace

Merge merge(const CommandText &base, CommandText ours, const CommandText &theirs,
            std::size_t markerSize)
{
    const std::string &baseBytes = base.source().bytes();
    const std::string &oursBytes = ours.source().bytes();
    const std::string &theirsBytes = theirs.source().bytes();
    if (oursBytes == baseBytes || theirsBytes == baseBytes || oursBytes == theirsBytes)
        return {.bytes = oursBytes == baseBytes ? theirsBytes : oursBytes, .conflicts = {}};
    const MergeTrees trees{base.tree(), ours.tree(), theirs.tree()};
    const std::vector<MergeStep> steps = planMerge(trees);
    const MergedText merged({base.source(), ours.source(), theirs.source()}, trees, steps);
    Merge result{.bytes = merged.render(Resolution::Marked, markerSize),
                 .conflicts = conflictsOf(steps)};
    if (!isAsWanted(merged, trees, steps))
        return {.bytes = wholeConflict(ours.source(), theirs.source(), markerSize),
                .conflicts = {},
                .isOneConflict = true};
    result.lostRemarks = countLostRemarks(base.source(), theirs.source(), SourceText(result.bytes));
    return result;
}

} // namespace veltext
