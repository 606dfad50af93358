// Recovery of the changes of a journal:
//
// 1. The base is that of the journal or, if that is damaged, the text that has its digest.
// 2. The changes are made in the data of the base.
// 3. They are merged into the data of the text.
// 4. The text is edited so that it has this data, and read again to check that.
#include "veltext/recovery.h"

#include "velapilt/src/velapilt.h"
#include "veltext/applyEdit.h"
#include "veltext/commandText.h"
#include "veltext/digest.h"
#include "veltext/error.h"
#include "veltext/keepLayout.h"
#include "veltext/mergePlan.h"
#include "veltext/treeData.h"

#include <utility>

namespace veltext {

namespace {

const std::string &baseOf(const Journal &journal, const std::optional<std::string> &text,
                          const std::string &name)
{
    if (journal.base) {
        return *journal.base;
    }
    if (text && digestOf(*text) == journal.head.baseDigest) {
        return *text;
    }
    // Without its base, a journal can still contain all of the data.
    static const std::string nothing;
    if (std::holds_alternative<WholeText>(journal.changes.front().what)) {
        return text ? *text : nothing;
    }
    throw Error(name, 0, "the text that the unsaved changes begin with is damaged");
}

/// The data after all changes. A change that does not fit ends it.
CommandText replay(const Journal &journal, const std::string &base, const std::string &name,
                   std::vector<std::string> *faults)
{
    CommandText data(base, name);
    std::size_t done = 0;
    try {
        for (const JournalChange &change : journal.changes) {
            if (const auto *whole = std::get_if<WholeText>(&change.what)) {
                data = CommandText(whole->text, name);
            } else {
                applyEdit(data.tree(), std::get<Edit>(change.what));
            }
            ++done;
        }
    } catch (const Error &error) {
        faults->push_back(std::to_string(journal.changes.size() - done) +
                          " changes cannot be made: " + error.message());
    }
    return data;
}

std::optional<std::string> valueOf(velHandle *handle, const velNode *node)
{
    const char *value = node != nullptr ? velDescribe(handle, node).value : nullptr;
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

/// Takes the changes into the data of the text. Gives what stays as it is there.
std::vector<RecoveryConflict> mergeInto(const MergeTrees &trees)
{
    const std::vector<MergeStep> steps = planMerge(trees);
    std::vector<RecoveryConflict> conflicts;
    for (const MergeStep &step : steps) {
        if (step.kind == StepKind::Conflict) {
            conflicts.push_back(
                {step.path, valueOf(trees.ours, step.ours), valueOf(trees.theirs, step.theirs)});
        }
    }
    for (const MergeStep &step : steps) {
        if (step.kind == StepKind::Take) {
            takeTheirs(trees, step.path);
        }
    }
    return conflicts;
}

std::string formatted(velHandle *tree)
{
    velStringList lines;
    require(velWrapText(tree, "/", velUsualWidth, &lines));
    std::string text;
    for (const char *line : lines) {
        text.append(line).append("\n");
    }
    return text;
}

/// The text with other data. Where its lines cannot be kept, it is formatted.
std::string editedText(const SourceText &source, velHandle *wanted)
{
    try {
        return keepLayout(source, TreeData(wanted));
    } catch (const Error &) {
        return formatted(wanted);
    }
}

} // namespace

Recovery recover(const Journal &journal, const std::optional<std::string> &text,
                 const std::string &name)
{
    Recovery result;
    result.faults = journal.faults;
    const std::string &baseBytes = baseOf(journal, text, name);
    const CommandText base(baseBytes, name);
    const CommandText theirs = replay(journal, baseBytes, name, &result.faults);
    const CommandText ours(text ? *text : baseBytes, name);
    result.isMerged = ours.source().bytes() != baseBytes;

    const TreeData before(ours.tree());
    result.conflicts = mergeInto({base.tree(), ours.tree(), theirs.tree()});
    const TreeData after(ours.tree());
    result.hasChanges = !haveSameData(before, after);
    result.bytes =
        result.hasChanges ? editedText(ours.source(), ours.tree()) : ours.source().bytes();
    return result;
}

} // namespace veltext
