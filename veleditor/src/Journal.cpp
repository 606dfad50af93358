// What goes into the journal of a document, and when it ends.
#include "veleditor/src/Journal.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "veltext/error.h"
#include "veltext/stateFolder.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace velEditor {

namespace {

/// After failures so many changes at most are passed over before the next attempt: it
/// writes all of the data.
constexpr std::size_t longestWait = 64;

} // namespace

Journal::Journal(Document &document, UndoHistory &history, std::string folder, QObject *parent)
    : QObject(parent), document_(document), history_(history), folder_(std::move(folder)),
      isRegular_(document.knownVersion() != nullptr), savedSteps_(history.stepCount()),
      commonSteps_(savedSteps_)
{
    connect(&document, &Document::applied, this, &Journal::note);
    connect(&document, &Document::modifiedMarked, this, &Journal::takeMark);
    connect(&document, &Document::saved, this, &Journal::takeSave);
    connect(&document, &Document::closed, this, &Journal::remove);
    connect(&document, &Document::loaded, this, &Journal::remove);
    connect(&history, &UndoHistory::stepsChanged, this, &Journal::settle);
}

Journal::~Journal() = default;

// --- Changes ------------------------------------------------------------------------

void Journal::note(const Edit &edit)
{
    if (!isRegular_ || document_.revision() == document_.formerRevision()) {
        return;
    }
    countSteps();
    if (document_.revision() == document_.revisionOnDisk()) {
        remove();
    } else if (waits_ > 0) {
        --waits_;
    } else {
        keep(edit);
    }
}

/// A new step takes the place of those that were undone.
void Journal::countSteps()
{
    if (!history_.isMoving() && history_.stepCount() > 0) {
        commonSteps_ = std::min(commonSteps_, history_.stepCount() - 1);
    }
}

/// How many steps are between what is on the disk and the data; at least 1.
std::uint32_t Journal::unsavedSteps() const
{
    const std::size_t now = history_.stepCount();
    const std::size_t common = std::min({commonSteps_, now, savedSteps_});
    return static_cast<std::uint32_t>(
        std::max<std::size_t>(now - common + (savedSteps_ - common), 1));
}

void Journal::keep(const Edit &edit)
{
    // What is on the disk may have changed without a save, after a reload.
    if (document_.formerRevision() == document_.revisionOnDisk()) {
        remove();
    }
    try {
        write(edit);
        written_ = document_.revision();
        mustFlush_ = history_.isBusy();
        if (!mustFlush_) {
            writer_->flush();
        }
        failures_ = 0;
    } catch (const veltext::Error &error) {
        fail(error.message());
    }
}

/// Appends the edit, or all of the data where the edit does not follow what is there.
void Journal::write(const Edit &edit)
{
    const std::uint64_t before = writer_ ? written_ : document_.revisionOnDisk();
    veltext::JournalChange change{std::time(nullptr), unsavedSteps(), edit};
    if (before != document_.formerRevision()) {
        change.what = veltext::WholeText{document_.data().formatted()};
    }
    if (writer_) {
        writer_->append(change);
        return;
    }
    if (folder_.empty()) {
        throw veltext::Error("neither XDG_STATE_HOME nor HOME names a folder");
    }
    const std::string &base = document_.knownVersion()->bytes();
    writer_.emplace(folder_, veltext::newHead(document_.file(), base, document_.isSafeMode()), base,
                    change);
}

void Journal::settle()
{
    if (!mustFlush_ || history_.isBusy()) {
        return;
    }
    mustFlush_ = false;
    try {
        writer_->flush();
    } catch (const veltext::Error &error) {
        fail(error.message());
    }
}

void Journal::fail(const std::string &reason)
{
    written_ = 0;
    mustFlush_ = false;
    waits_ = std::min(std::size_t(1) << std::min<std::size_t>(failures_, 10), longestWait) - 1;
    ++failures_;
    if (!std::exchange(hasFailed_, true)) {
        emit failed(reason);
    }
}

// --- The end of a journal -----------------------------------------------------------

void Journal::takeSave(const std::string &target)
{
    if (veltext::canonicalPath(target) == veltext::canonicalPath(document_.file())) {
        remove();
    }
}

/// All changes are saved, undone, or not wanted.
void Journal::remove()
{
    if (writer_) {
        writer_->remove();
        writer_.reset();
    }
    mustFlush_ = false;
}

void Journal::takeMark(bool isModified)
{
    if (!isModified && document_.revision() == document_.revisionOnDisk()) {
        savedSteps_ = history_.stepCount();
        commonSteps_ = savedSteps_;
    }
}

} // namespace velEditor
