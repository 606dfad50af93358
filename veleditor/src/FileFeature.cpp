// The notices about the file, and their choices.
#include "veleditor/src/FileFeature.h"

#include "veleditor/src/ConflictDialog.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/TakeOver.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/WaitCursor.h"
#include "veltext/error.h"

#include <QAction>
#include <QEvent>
#include <QWidget>

#include <optional>
#include <utility>
#include <vector>

namespace velEditor {

namespace {

const QLatin1String noticeKind("file");

} // namespace

FileFeature::FileFeature(QWidget *window, Document &document, UndoHistory &history,
                         NoticeBar &notice, VELTree &tree)
    : QObject(window), window_(window), document_(document), history_(history), notice_(notice),
      tree_(tree), watch_(document.file())
{
    setObjectName(QStringLiteral("FileFeature"));
    connect(&watch_, &FileWatch::noticed, this, &FileFeature::show);
    connect(&document_, &Document::versionKnown, this, &FileFeature::follow);
    connect(&document_, &Document::versionKept, this, &FileFeature::noteKept);
    connect(&document_, &Document::saved, this, &FileFeature::showKept);
    connect(&document_, &Document::closed, this, [this] { watch_.expect(nullptr); });
    window->installEventFilter(this);
    follow();
}

bool FileFeature::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate) {
        watch_.check();
    }
    return QObject::eventFilter(watched, event);
}

void FileFeature::follow()
{
    notice_.withdraw(noticeKind);
    watch_.expect(document_.knownVersion());
}

// --- Notices ----------------------------------------------------------------------

void FileFeature::show(FileWatch::State state)
{
    switch (state) {
    case FileWatch::State::Same:
        notice_.withdraw(noticeKind);
        break;
    case FileWatch::State::Changed:
        post(tr("%1 was changed by another program").arg(fileName()),
             reloading() + QList<NoticeChoice>{{tr("&Merge"), [this] { merge(); }, false}} +
                 pressing(tr("C&ompare"), "Changes"));
        break;
    case FileWatch::State::Removed:
        post(tr("%1 was removed").arg(fileName()), pressing(tr("&Save"), "Save"));
        break;
    case FileWatch::State::Moved:
        post(tr("%1 was renamed to %2").arg(fileName(), fromBytes(lastComponent(watch_.newPath()))),
             pressing(tr("&Save"), "Save"));
        break;
    }
}

void FileFeature::noteKept(bool isUnseen, const Message &fault)
{
    kept_.clear();
    if (isUnseen) {
        kept_ = fault ? tr("The version of another program was replaced, and could not be kept: %1")
                            .arg(fromBytes(*fault))
                      : tr("The version of another program is kept; see History...");
    }
}

void FileFeature::showKept()
{
    if (!kept_.isEmpty()) {
        post(std::exchange(kept_, QString()), pressing(tr("&History"), "History"));
    }
}

void FileFeature::refuse(const std::string &reason)
{
    QString text = fromBytes(reason);
    const QString path = fromBytes(document_.file());
    if (text.startsWith(path)) {
        text.replace(0, path.size(), fileName());
    }
    post(text, reloading());
}

void FileFeature::post(const QString &text, const QList<NoticeChoice> &choices)
{
    notice_.post({noticeKind, text, choices});
}

QList<NoticeChoice> FileFeature::reloading()
{
    return {{tr("&Reload"), [this] { reload(); }, false}};
}

/// A choice that does what an action of the window does; none if there is no such
/// action. The notice stays until it is no longer true.
QList<NoticeChoice> FileFeature::pressing(const QString &label, const char *action) const
{
    auto *found = window_->findChild<QAction *>(QString::fromLatin1(action));
    if (found == nullptr) {
        return {};
    }
    return {{label, [found] { found->trigger(); }, false}};
}

QString FileFeature::fileName() const
{
    return fromBytes(lastComponent(document_.file()));
}

// --- Choices ----------------------------------------------------------------------

/// The rows follow once, after all edits.
Message FileFeature::makeAtOnce(const std::function<Message()> &change)
{
    const WaitCursor wait;
    Message failure;
    tree_.showAtOnce([&] { failure = change(); });
    return failure;
}

void FileFeature::reload()
{
    if (const Message refused =
            makeAtOnce([this] { return velEditor::reload(document_, history_); })) {
        refuse(*refused);
    }
}

void FileFeature::merge()
{
    try {
        const FileMerge merge = callWaiting([this] { return FileMerge(document_); });
        const std::optional<std::vector<bool>> answers =
            askAboutConflicts(window_, merge.conflicts());
        if (!answers) {
            return;
        }
        if (const Message failure =
                makeAtOnce([&] { return merge.apply(document_, history_, *answers); })) {
            refuse(*failure);
        }
    } catch (const veltext::Error &refused) {
        refuse(refused.message());
    }
}

} // namespace velEditor
