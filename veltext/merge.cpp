// The three-way merge of command files.
//
// 1. If two versions have the same bytes, the result is clear at once.
// 2. Comparing the trees gives the steps: changes to take, and conflicts.
// 3. The steps edit the text of OURS; the rest of the text does not change.
// 4. The result is read again, once with each side of the conflicts. If its data
//    differs from the wanted data, the whole file becomes one conflict.
#include "veltext/mergeText.h"
#include "veltext/veltext.h"

namespace veltext {

namespace {

/// The reason of a conflict, for the user.
std::string reasonOf(const MergeStep &step)
{
    if (step.theirs == nullptr) {
        return "changed in ours, deleted in theirs";
    }
    if (step.ours == nullptr) {
        return "deleted in ours, changed in theirs";
    }
    return step.base != nullptr ? "changed on both sides"
                                : "added on both sides, with different contents";
}

std::vector<MergeConflict> conflictsOf(const std::vector<MergeStep> &steps)
{
    std::vector<MergeConflict> conflicts;
    for (const MergeStep &step : steps) {
        if (step.kind == StepKind::Conflict) {
            conflicts.push_back({step.path, reasonOf(step)});
        }
    }
    return conflicts;
}

/// Whether the text can be parsed and has the same data as the tree.
bool holds(const std::string &bytes, velHandle *tree)
{
    try {
        return haveSameData(CommandText(bytes).tree(), tree);
    } catch (const Error &) {
        return false;
    }
}

/// Makes all steps of this kind in the tree of OURS. True if there is one.
bool take(const std::vector<MergeStep> &steps, StepKind kind, const MergeTrees &trees)
{
    bool isAny = false;
    for (const MergeStep &step : steps) {
        if (step.kind != kind) {
            continue;
        }
        takeTheirs(trees, step.path);
        isAny = true;
    }
    return isAny;
}

/// Whether the merged text gives the wanted data. Changes the tree of OURS, first
/// by the clear steps, then by the conflicts.
bool isAsWanted(const MergedText &merged, const MergeTrees &trees,
                const std::vector<MergeStep> &steps)
{
    if (steps.empty()) {
        return true;
    }
    take(steps, StepKind::Take, trees);
    if (!holds(merged.render(Resolution::Ours), trees.ours)) {
        return false;
    }
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
    if (oursBytes == baseBytes || theirsBytes == baseBytes || oursBytes == theirsBytes) {
        return {.bytes = oursBytes == baseBytes ? theirsBytes : oursBytes, .conflicts = {}};
    }
    const MergeTrees trees{base.tree(), ours.tree(), theirs.tree()};
    const std::vector<MergeStep> steps = planMerge(trees);
    const MergedText merged({base.source(), ours.source(), theirs.source()}, trees, steps);
    Merge result{.bytes = merged.render(Resolution::Marked, markerSize),
                 .conflicts = conflictsOf(steps)};
    if (!isAsWanted(merged, trees, steps)) {
        return {.bytes = wholeConflict(ours.source(), theirs.source(), markerSize),
                .conflicts = {},
                .isOneConflict = true};
    }
    result.lostComments =
        countLostComments(base.source(), theirs.source(), SourceText(result.bytes));
    return result;
}

} // namespace veltext
