// The steps of an undo history as values, and back.
#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"

#include <algorithm>
#include <utility>

namespace velEditor {

namespace {

std::size_t bytesOf(const UndoStep &step)
{
    std::size_t bytes = static_cast<std::size_t>(step.name.size());
    for (const Edit &edit : step.edits) {
        bytes += sizeof(Edit) + edit.path.size() + edit.oldText.size() + edit.newText.size();
    }
    return bytes;
}

} // namespace

/// Whether each change begins with the state in which the one before it ended.
bool UndoHistory::isUnbroken(const Step &step)
{
    return std::adjacent_find(step.changes.begin(), step.changes.end(),
                              [](const Change &one, const Change &next) {
                                  return one.after != next.before;
                              }) == step.changes.end();
}

UndoStep UndoHistory::valueOf(const Step &step)
{
    UndoStep value{step.name};
    for (const Change &change : step.changes) {
        value.edits.push_back(change.edit);
    }
    return value;
}

/// All steps in the order in which the data went or would go through them.
std::vector<const UndoHistory::Step *> UndoHistory::allSteps() const
{
    std::vector<const Step *> steps;
    for (const Step &step : done_) {
        steps.push_back(&step);
    }
    for (auto step = undone_.rbegin(); step != undone_.rend(); ++step) {
        steps.push_back(&*step);
    }
    return steps;
}

/// Adds the value of a step, if each change is known and there is room for it.
bool UndoHistory::keep(const Step &step, std::size_t &room, std::vector<UndoStep> &kept)
{
    UndoStep value = valueOf(step);
    const std::size_t bytes = bytesOf(value);
    if (!isUnbroken(step) || bytes > room) {
        return false;
    }
    room -= bytes;
    kept.push_back(std::move(value));
    return true;
}

std::optional<UndoSteps> UndoHistory::stepsAround(std::uint64_t revision,
                                                  std::size_t mostBytes) const
{
    const auto first = [](const Step *step) { return step->changes.front().before; };
    const auto last = [](const Step *step) { return step->changes.back().after; };
    const std::vector<const Step *> steps = allSteps();
    auto done = std::find_if(steps.rbegin(), steps.rend(),
                             [&](const Step *step) { return last(step) == revision; });
    auto undone = std::find_if(steps.begin(), steps.end(),
                               [&](const Step *step) { return first(step) == revision; });
    if (groupDepth_ > 0 || (done == steps.rend() && undone == steps.end())) {
        return std::nullopt;
    }

    UndoSteps around;
    for (std::uint64_t state = revision;
         done != steps.rend() && last(*done) == state && keep(**done, mostBytes, around.done);
         ++done) {
        state = first(*done);
    }
    for (std::uint64_t state = revision; undone != steps.end() && first(*undone) == state &&
                                         keep(**undone, mostBytes, around.undone);
         ++undone) {
        state = last(*undone);
    }
    return around;
}

/// A step that ends with a state.
UndoHistory::Step UndoHistory::stepTo(const UndoStep &step, std::uint64_t after)
{
    Step made{step.name, {}};
    for (auto edit = step.edits.rbegin(); edit != step.edits.rend(); ++edit) {
        const std::uint64_t before = document_.nextRevision();
        made.changes.push_back({*edit, before, after});
        after = before;
    }
    std::reverse(made.changes.begin(), made.changes.end());
    return made;
}

/// A step that begins with a state.
UndoHistory::Step UndoHistory::stepFrom(const UndoStep &step, std::uint64_t before)
{
    Step made{step.name, {}};
    for (const Edit &edit : step.edits) {
        const std::uint64_t after = document_.nextRevision();
        made.changes.push_back({edit, before, after});
        before = after;
    }
    return made;
}

void UndoHistory::restore(const UndoSteps &steps)
{
    done_.clear();
    undone_.clear();
    discarded_.clear();
    isOpen_ = false;
    std::uint64_t state = document_.revision();
    for (const UndoStep &step : steps.done) {
        done_.push_back(stepTo(step, state));
        state = done_.back().changes.front().before;
    }
    state = document_.revision();
    for (const UndoStep &step : steps.undone) {
        undone_.push_back(stepFrom(step, state));
        state = undone_.back().changes.back().after;
    }
    std::reverse(done_.begin(), done_.end());
    std::reverse(undone_.begin(), undone_.end());
    emit stepsChanged();
}

} // namespace velEditor
