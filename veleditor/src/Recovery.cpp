// The notices about journals that a crash has left, and what their choices do.
#include "veleditor/src/Recovery.h"

#include "veleditor/src/DataChange.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/RecoveryDialog.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoHistory.h"
#include "veltext/digest.h"
#include "veltext/error.h"
#include "veltext/stateFolder.h"

#include <QDateTime>
#include <QFileInfo>
#include <QWidget>

#include <algorithm>
#include <iterator>
#include <utility>

namespace velEditor {

namespace {

/// Only the time of a moment of today.
QString momentText(std::int64_t seconds)
{
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(seconds);
    const bool isToday = moment.date() == QDate::currentDate();
    return moment.toString(isToday ? QStringLiteral("HH:mm") : QStringLiteral("yyyy-MM-dd HH:mm"));
}

veltext::Change asChange(const veltext::RecoveryConflict &conflict)
{
    return {veltext::DifferenceKind::Changed, conflict.path, conflict.kept, conflict.inJournal};
}

} // namespace

Recovery::Recovery(Document &document, UndoHistory &history, NoticeBar &notice, std::string folder,
                   QWidget *window)
    : QObject(window), document_(document), history_(history), notice_(notice),
      folder_(std::move(folder)), window_(window)
{
    connect(&document, &Document::saved, this, &Recovery::takeSave);
    connect(&document, &Document::closed, this, &Recovery::takeEnd);
    connect(&document, &Document::upgraded, this, &Recovery::offerAgain);
    if (document.knownVersion() != nullptr) {
        markOpen();
        find();
    }
}

Recovery::~Recovery() = default;

void Recovery::markOpen()
{
    const QString name = QFileInfo(fromBytes(document_.file())).fileName();
    for (const veltext::FileUser &user : veltext::OpenMark::usersOf(document_.file())) {
        notice_.post({QStringLiteral("open"),
                      tr("%1 is open in another editor (process %2 on %3)")
                          .arg(name)
                          .arg(user.process)
                          .arg(fromBytes(user.host)),
                      {}});
    }
    try {
        mark_ = std::make_unique<veltext::OpenMark>(document_.file());
    } catch (const veltext::Error &) {
        // The first change that cannot be kept is reported; until then nothing is lost.
        mark_.reset();
    }
}

// --- The notice -----------------------------------------------------------------------

void Recovery::find()
{
    std::vector<std::string> faults;
    left_ = veltext::leftJournals(folder_, document_.file(), &faults);
    std::reverse(left_.begin(), left_.end());
    for (const std::string &fault : faults) {
        report(fromBytes(fault));
    }
    offer();
}

/// The data with the changes of the journal that is offered. Throws a veltext::Error.
veltext::Recovery Recovery::recovered() const
{
    return veltext::recover(left_.back().journal, document_.data().formatted(), document_.file());
}

/// Whether the journal that is offered has something that the data does not have.
bool Recovery::isNeeded() const
{
    try {
        const veltext::Recovery result = recovered();
        return result.hasChanges || !result.conflicts.empty() || !result.faults.empty();
    } catch (const veltext::Error &) {
        return true;
    }
}

void Recovery::offer()
{
    while (!left_.empty() && !isNeeded()) {
        left_.back().file.remove();
        left_.pop_back();
    }
    if (left_.empty()) {
        return;
    }
    QList<NoticeChoice> choices = {{tr("&Show"), [this] { show(); }, false},
                                   {tr("&Discard"), [this] { discard(); }}};
    if (!document_.isSafeMode() || left_.back().journal.head.isSafe) {
        choices.prepend({tr("&Restore"), [this] { restore(); }});
    }
    notice_.post({QStringLiteral("journal"), noticeText(), choices});
}

/// The journal may have nothing but the same upgrade.
void Recovery::offerAgain()
{
    notice_.withdraw(QStringLiteral("journal"));
    offer();
}

QString Recovery::noticeText() const
{
    const veltext::Journal &journal = left_.back().journal;
    const veltext::JournalChange &last = journal.changes.back();
    QString text =
        tr("Unsaved changes of %1 (%2)").arg(momentText(last.time)).arg(std::max(last.steps, 1U));
    if (journal.head.baseDigest != veltext::digestOf(document_.knownVersion()->bytes())) {
        text += tr("; the file has changed since");
    }
    if (!journal.faults.empty()) {
        text += tr("; a part of them is damaged");
    }
    if (document_.isSafeMode() && !journal.head.isSafe) {
        text += tr("; they cannot be restored in safe mode");
    }
    return text;
}

// --- The choices ------------------------------------------------------------------------

void Recovery::restore()
{
    Message failure;
    try {
        const veltext::Recovery result = recovered();
        failure = changeTo(document_, history_, result.bytes, tr("Restore Unsaved Changes"));
        if (!failure && (!result.conflicts.empty() || !result.faults.empty())) {
            showResult(result);
        }
    } catch (const veltext::Error &error) {
        failure = error.message();
    }
    if (failure) {
        report(tr("The unsaved changes cannot be restored: ") + fromBytes(*failure));
        return;
    }
    restored_.push_back(std::move(left_.back()));
    left_.pop_back();
    offer();
}

void Recovery::show() const
{
    try {
        const veltext::Recovery result = recovered();
        std::vector<veltext::Change> changes = veltext::diff(
            veltext::CommandText(document_.data().formatted()), veltext::CommandText(result.bytes));
        QString text = tr("Restore makes these changes.");
        for (const veltext::RecoveryConflict &conflict : result.conflicts) {
            text += u'\n' + tr("%1 has changed in the file too, and stays as it is.")
                                .arg(fromBytes(conflict.path));
        }
        for (const std::string &fault : result.faults) {
            text += u'\n' + fromBytes(fault);
        }
        (new RecoveryDialog(window_, text, std::move(changes)))->show();
    } catch (const veltext::Error &error) {
        (new RecoveryDialog(window_, fromBytes(error.message()), {}))->show();
    }
}

/// What is not as it was before the crash.
void Recovery::showResult(const veltext::Recovery &result) const
{
    QString text;
    if (!result.conflicts.empty()) {
        text = tr("These values have changed in the file since, and stay as they are.");
    }
    for (const std::string &fault : result.faults) {
        text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + fromBytes(fault);
    }
    std::vector<veltext::Change> changes;
    std::transform(result.conflicts.begin(), result.conflicts.end(), std::back_inserter(changes),
                   asChange);
    (new RecoveryDialog(window_, text, std::move(changes)))->show();
}

void Recovery::discard()
{
    left_.back().file.remove();
    left_.pop_back();
    offer();
}

void Recovery::report(const QString &text)
{
    notice_.post({QStringLiteral("state"), text, {}});
}

// --- The end of the journals --------------------------------------------------------------

void Recovery::takeSave(const std::string &target)
{
    if (veltext::canonicalPath(target) != veltext::canonicalPath(document_.file())) {
        return;
    }
    for (veltext::LeftJournal &journal : restored_) {
        journal.file.remove();
    }
    restored_.clear();
}

/// The user has been asked about changes only if there are any.
void Recovery::takeEnd()
{
    if (document_.isModified()) {
        takeSave(document_.file());
    }
    mark_.reset();
}

} // namespace velEditor
