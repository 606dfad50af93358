// What the main window has besides its menus. Each feature is a class of its own,
// follows the document, and belongs to the window.
#include "veleditor/src/Editor.h"

#include "veleditor/src/ChangesFeature.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/FileFeature.h"
#include "veleditor/src/HistoryFeature.h"
#include "veleditor/src/Journal.h"
#include "veleditor/src/KeepLayout.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/Recovery.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoKeeper.h"
#include "veleditor/src/UpgradeNotice.h"

namespace velEditor {

// An action that a feature adds to the window is listed in the strip's menu.
void Editor::addFeatures()
{
    new HistoryFeature(this, *document_, *history_, *notice_);
    new ChangesFeature(this, *document_, *history_, *tree_);
    // Of an upgrade it must know before the upgrade becomes a step.
    new KeepLayout(*document_, *notice_, *this, [this] { return saveAgain(); });
    new UpgradeNotice(*document_, *history_, *notice_, *this);
    // And this one after it.
    new UndoKeeper(*document_, *history_, *notice_, this);
    new FileFeature(this, *document_, *history_, *notice_, *tree_);
    addRecovery();
}

void Editor::addRecovery()
{
    const auto *journal = new Journal(*document_, *history_, veltext::journalFolder(), this);
    connect(journal, &Journal::failed, this, [this](const std::string &reason) {
        notice_->post({QStringLiteral("state"),
                       tr("Your unsaved changes would be lost in a crash: ") + fromBytes(reason),
                       {}});
    });
    new Recovery(*document_, *history_, *notice_, veltext::journalFolder(), this);
}

} // namespace velEditor
