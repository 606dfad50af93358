// When steps are kept and got back, and what is said about failures.
#include "veleditor/src/UndoKeeper.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoFile.h"
#include "veleditor/src/UndoHistory.h"
#include "veltext/error.h"

#include <exception>
#include <optional>
#include <string>

namespace velEditor {

namespace {

/// Calls a function; returns why it failed, nothing if it did not.
template <typename Function>
Message failureOf(Function function)
{
    try {
        function();
        return std::nullopt;
    } catch (const veltext::Error &failure) {
        return failure.message();
    } catch (const std::exception &failure) {
        return failure.what();
    }
}

} // namespace

UndoKeeper::UndoKeeper(Document &document, UndoHistory &history, NoticeBar &notice, QObject *parent)
    : QObject(parent), document_(document), history_(history), notice_(notice)
{
    connect(&document, &Document::upgraded, this, &UndoKeeper::forgetIfUnknown);
    connect(&document, &Document::saved, this, &UndoKeeper::keepAfterSave);
    connect(&document, &Document::closed, this, &UndoKeeper::keepAtEnd);
    restore();
    connect(&history, &UndoHistory::stepsChanged, this, [this] { areNew_ = true; });
}

/// In safe mode the rules of the next start are others; a pipe has another text.
bool UndoKeeper::canKeep() const
{
    return !document_.isSafeMode() && document_.knownVersion() != nullptr;
}

void UndoKeeper::restore()
{
    if (!canKeep()) {
        return;
    }
    KeptUndo kept;
    if (const Message failure = failureOf(
            [&] { kept = UndoFile(document_.file()).read(document_.knownVersion()->bytes()); })) {
        kept.fault = *failure;
    }
    if (!kept.steps.isEmpty()) {
        history_.restore(kept.steps);
    }
    if (!kept.fault.empty()) {
        report(tr("Not every earlier change can be undone: %1").arg(fromBytes(kept.fault)));
    }
}

// Where the upgrade is not a step, nobody knows whether the steps before it still fit.
void UndoKeeper::forgetIfUnknown()
{
    if (!history_.stepsAround(document_.revision(), 0)) {
        history_.clear();
    }
}

void UndoKeeper::keepAfterSave(const std::string &target)
{
    if (target == document_.file() && canKeep()) {
        keep(history_.stepsAround(document_.revisionOnDisk(), UndoFile::mostBytes)
                 .value_or(UndoSteps()));
    }
}

// No step may lead to the state on the disk any more. What was kept at the last save
// then stays, and so does what another program has kept with its own text.
void UndoKeeper::keepAtEnd()
{
    if (!areNew_ || !canKeep() ||
        document_.knownVersion()->compare(document_.file()).match != FileVersion::Match::Same) {
        return;
    }
    if (const std::optional<UndoSteps> steps =
            history_.stepsAround(document_.revisionOnDisk(), UndoFile::mostBytes)) {
        keep(*steps);
    }
}

void UndoKeeper::keep(const UndoSteps &steps)
{
    areNew_ = false;
    if (const Message failure = failureOf(
            [&] { UndoFile(document_.file()).write(document_.knownVersion()->bytes(), steps); })) {
        report(tr("These changes cannot be undone after the file is closed: %1")
                   .arg(fromBytes(*failure)));
    }
}

/// The folder may fail at every save; that is said once.
void UndoKeeper::report(const QString &text)
{
    if (isReported_) {
        return;
    }
    isReported_ = true;
    notice_.post({QStringLiteral("state"), text, {}});
}

} // namespace velEditor
