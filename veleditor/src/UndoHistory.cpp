// Collects the edits of a document as steps, and undoes and redoes them.
#include "veleditor/src/UndoHistory.h"

#include "velapilt/src/velComponentText.h"
#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/Text.h"

#include <utility>

namespace velEditor {

namespace {

/// The label of the object at a path, as its row shows it; for a singleton only the type.
QString objectAt(const std::string &path)
{
    const std::string component = lastComponent(path);
    return fromBytes(velSplitComponent(component).hasColon ? labelOf(component) : component);
}

QString assignment(const Edit &edit, const std::string &value)
{
    return fromBytes(lastComponent(edit.path)) + QLatin1String(" = ") + fromBytes(value);
}

QString nameOf(const Edit &edit)
{
    switch (edit.kind) {
    case Edit::Kind::SetValue:
        return assignment(edit, edit.newText);
    case Edit::Kind::AddParameter:
        return UndoHistory::tr("Add %1").arg(assignment(edit, edit.newText));
    case Edit::Kind::DeleteParameter:
        return UndoHistory::tr("Delete %1").arg(fromBytes(lastComponent(edit.path)));
    case Edit::Kind::AddObject:
        return UndoHistory::tr("Add %1").arg(objectAt(edit.path));
    case Edit::Kind::DeleteObject:
        return UndoHistory::tr("Delete %1").arg(objectAt(edit.path));
    case Edit::Kind::ReplaceObject:
        break;
    }
    return UndoHistory::tr("Change %1").arg(objectAt(edit.path));
}

/// Updates the marks of validity, as the window does after such an edit.
void validateAfter(Document &document, const Edit &edit)
{
    if (edit.kind == Edit::Kind::SetValue) {
        static_cast<void>(document.validateParameter(edit.path));
    } else if (edit.kind == Edit::Kind::AddParameter) {
        static_cast<void>(document.validateObject(parentPath(edit.path)));
    }
}

} // namespace

UndoHistory::UndoHistory(Document &document, QObject *parent) : QObject(parent), document_(document)
{
    connect(&document, &Document::loaded, this, &UndoHistory::clear);
    connect(&document, &Document::applied, this, &UndoHistory::note);
}

QString UndoHistory::nameOf(const std::vector<Step> &steps)
{
    if (steps.empty()) {
        return QString();
    }
    const Step &step = steps.back();
    return shortened(step.name.isEmpty() ? velEditor::nameOf(step.changes.front().edit)
                                         : step.name);
}

QString UndoHistory::undoText() const
{
    return nameOf(done_);
}

QString UndoHistory::redoText() const
{
    return nameOf(undone_);
}

std::size_t UndoHistory::undoSize() const
{
    return done_.empty() ? 0 : done_.back().changes.size();
}

std::size_t UndoHistory::redoSize() const
{
    return undone_.empty() ? 0 : undone_.back().changes.size();
}

void UndoHistory::clear()
{
    done_.clear();
    undone_.clear();
    discarded_.clear();
    isOpen_ = false;
    emit stepsChanged();
}

// --- Steps ------------------------------------------------------------------------

bool UndoHistory::isRollBack() const
{
    return !done_.empty() && done_.back().changes.back().after == document_.formerRevision() &&
           done_.back().changes.back().before == document_.revision();
}

void UndoHistory::note(const Edit &edit)
{
    if (isMoving_ || document_.formerRevision() == document_.revision()) {
        return;
    }
    if (isRollBack()) {
        dropRolledBack();
    } else {
        if (!isOpen_) {
            done_.push_back({groupName_, {}});
        }
        isOpen_ = groupDepth_ > 0;
        done_.back().changes.push_back({edit, document_.formerRevision(), document_.revision()});
        discarded_ = std::exchange(undone_, {});
    }
    emit stepsChanged();
}

void UndoHistory::dropRolledBack()
{
    done_.back().changes.pop_back();
    if (done_.back().changes.empty()) {
        done_.pop_back();
        isOpen_ = false;
    }
    undone_ = std::exchange(discarded_, {});
}

void UndoHistory::beginGroup(const QString &name)
{
    if (groupDepth_++ > 0) {
        return;
    }
    groupName_ = name;
    emit stepsChanged();
}

void UndoHistory::endGroup()
{
    if (--groupDepth_ > 0) {
        return;
    }
    groupName_.clear();
    isOpen_ = false;
    emit stepsChanged();
}

// --- Undo and redo ------------------------------------------------------------------

Message UndoHistory::undo()
{
    if (!canUndo()) {
        return std::nullopt;
    }
    Step step = std::move(done_.back());
    done_.pop_back();
    Message failure;
    for (auto change = step.changes.rbegin(); change != step.changes.rend() && !failure; ++change) {
        failure = make(inverse(change->edit), change->after, change->before);
    }
    const Edit last = inverse(step.changes.front().edit);
    undone_.push_back(std::move(step));
    return finish(last, std::move(failure));
}

Message UndoHistory::redo()
{
    if (!canRedo()) {
        return std::nullopt;
    }
    // The step is already among those that are done, for whoever asks during its edits.
    done_.push_back(std::move(undone_.back()));
    undone_.pop_back();
    const Step &step = done_.back();
    Message failure;
    for (auto change = step.changes.begin(); change != step.changes.end() && !failure; ++change) {
        failure = make(change->edit, change->before, change->after);
    }
    const Edit last = step.changes.back().edit;
    return finish(last, std::move(failure));
}

Message UndoHistory::make(const Edit &edit, std::uint64_t from, std::uint64_t to)
{
    isMoving_ = true;
    Message failure = document_.applyBetween(edit, from, to);
    isMoving_ = false;
    if (!failure) {
        validateAfter(document_, edit);
    }
    return failure;
}

Message UndoHistory::finish(const Edit &last, Message failure)
{
    discarded_.clear();
    if (failure) {
        clear();
        return failure;
    }
    emit stepsChanged();
    emit moved(last);
    return failure;
}

} // namespace velEditor
