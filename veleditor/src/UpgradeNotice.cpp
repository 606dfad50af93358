// Makes the upgrade a step of the undo history, and the notice about it.
#include "veleditor/src/UpgradeNotice.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/DataChange.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/src/WaitCursor.h"
#include "veltext/commandText.h"
#include "veltext/error.h"
#include "veltext/keepLayout.h"

#include <algorithm>
#include <new>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

namespace velEditor {

namespace {

const QLatin1String kind("upgrade");
constexpr char versionPath[] = "/LANGUAGE/Version";

/// The number of changes in the list: a line without a path says what failed.
int countOf(const std::string &changes)
{
    std::istringstream lines(changes);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        count += line.starts_with('/') ? 1 : 0;
    }
    return count;
}

/// What the file holds; nothing if it could be read only once, or if its objects nest so
/// deeply that their paths would need too much memory.
std::optional<veltext::CommandText> formerText(const Document &document)
{
    try {
        veltext::CommandText text(document.loadedText());
        const bool isUsable =
            !document.loadedText().empty() && text.levels() <= veltext::deepestKept;
        return isUsable ? std::optional(std::move(text)) : std::nullopt;
    } catch (const veltext::Error &) {
        return std::nullopt;
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
}

/// The edits that lead back to the data before the upgrade. The window makes all of its
/// rows again for each object that comes or goes; so many of them are replaced together.
std::vector<Edit> editsBack(const CommandData &data, const veltext::CommandText &former)
{
    constexpr int mostObjects = 10;
    std::vector<Edit> edits = editsTowards(data, former);
    const auto objects = std::count_if(edits.begin(), edits.end(), [](const Edit &edit) {
        return edit.kind == Edit::Kind::AddObject || edit.kind == Edit::Kind::DeleteObject;
    });
    return objects > mostObjects ? editsTowards(data, former, EditDetail::Objects) : edits;
}

QString sentence(const std::optional<std::string> &from, const std::optional<std::string> &to,
                 int count)
{
    const QString changes =
        count == 1 ? UpgradeNotice::tr("1 change") : UpgradeNotice::tr("%1 changes").arg(count);
    if (!from || !to || *from == *to) {
        return UpgradeNotice::tr("Upgraded: %1").arg(changes);
    }
    return UpgradeNotice::tr("Upgraded from %1 to %2: %3")
        .arg(fromBytes(*from), fromBytes(*to), changes);
}

} // namespace

void showUpgradeMessages(QWidget &window, const std::string &changes)
{
    if (auto *shown = window.findChild<VELUpgradeMessagesDialog *>(); shown != nullptr) {
        shown->raise();
        shown->activateWindow();
        return;
    }
    auto *dialog = new VELUpgradeMessagesDialog(&window, QStringLiteral("Command File Updates"),
                                                "The following changes were made:\n\n" + changes);
    dialog->showBeside(window);
}

UpgradeNotice::UpgradeNotice(Document &document, UndoHistory &history, NoticeBar &notices,
                             QWidget &window)
    : QObject(&window), document_(document), history_(history), notices_(notices), window_(window)
{
    connect(&document, &Document::upgraded, this, &UpgradeNotice::takeUpgrade);
    connect(&history, &UndoHistory::stepsChanged, this, &UpgradeNotice::withdrawIfUndone);
}

void UpgradeNotice::takeUpgrade(const std::string &changes)
{
    const std::optional<veltext::CommandText> former = formerText(document_);
    const std::optional<std::string> from = former ? former->value(versionPath) : std::nullopt;
    const std::optional<std::string> to = document_.data().value(versionPath);
    before_ = document_.revisionOnDisk();
    QList<NoticeChoice> choices{
        {tr("&Show"), [this, changes] { showUpgradeMessages(window_, changes); }, false}};
    if (former && makeStep(*former, to ? tr("Upgrade to %1").arg(fromBytes(*to)) : tr("Upgrade"))) {
        choices.append({tr("&Undo"), [this] { undo(); }});
    }
    notices_.post({kind, sentence(from, to, countOf(changes)), choices});
}

/// False if the data did not change, or without memory for the step.
bool UpgradeNotice::makeStep(const veltext::CommandText &former, const QString &name)
{
    std::vector<Edit> edits;
    try {
        edits = editsBack(document_.data(), former);
    } catch (const std::bad_alloc &) {
        return false;
    }
    std::reverse(edits.begin(), edits.end());
    for (Edit &edit : edits) {
        edit = inverse(edit);
    }
    const UndoGroup group(history_, name);
    document_.reportMade(edits, before_);
    return !edits.empty();
}

/// What was changed since the upgrade is undone with it, step by step, and can be redone
/// in the same way.
void UpgradeNotice::undo()
{
    const WaitCursor wait;
    Message failure;
    while (!failure && document_.revision() != before_ && history_.canUndo()) {
        failure = history_.undo();
    }
    if (failure) {
        reportFailure(&window_, tr("Undo"), fromBytes(*failure));
    }
}

void UpgradeNotice::withdrawIfUndone()
{
    if (before_ != 0 && document_.revision() == before_) {
        notices_.withdraw(kind);
    }
}

} // namespace velEditor
