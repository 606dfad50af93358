// The setting, the text of a save, and what a notice says about that.
#include "veleditor/src/KeepLayout.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/LayoutText.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/Text.h"
#include "veltext/error.h"
#include "veltext/sourceText.h"
#include "veltext/statement.h"

#include <QAction>
#include <QWidget>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace velEditor {

namespace {

const QLatin1String kind("layout");

std::size_t commentsIn(const FileVersion *version)
{
    return version != nullptr ? veltext::countComments(veltext::SourceText(version->bytes())) : 0;
}

QString commentsText(std::size_t count)
{
    return count == 1 ? KeepLayout::tr("1 comment") : KeepLayout::tr("%1 comments").arg(count);
}

} // namespace

KeepLayout::KeepLayout(Document &document, NoticeBar &notices, QWidget &window, SaveAgain saveAgain)
    : QObject(&window), document_(document), notices_(notices), saveAgain_(std::move(saveAgain))
{
    addAction(window);
    document.setTextMaker([this] { return textToSave(); });
    connect(&document, &Document::saved, this, &KeepLayout::noteSave);
    connect(&document, &Document::upgraded, this, &KeepLayout::noteUpgrade);
    connect(&document, &Document::applied, this, &KeepLayout::followUpgrade);
    if (!settings_.fault().isEmpty()) {
        notices_.post({kind, tr("The settings cannot be used: ") + settings_.fault(), {}});
    }
}

void KeepLayout::addAction(QWidget &window)
{
    action_ = new QAction(tr("Keep Comments and &Layout"), &window);
    action_->setObjectName(QStringLiteral("KeepLayout"));
    action_->setToolTip(tr("A save changes only the lines of what was edited"));
    action_->setCheckable(true);
    action_->setChecked(settings_.keepsLayout());
    connect(action_, &QAction::toggled, this, &KeepLayout::set);
    window.addAction(action_);
}

void KeepLayout::set(bool keeps)
{
    const QString fault = settings_.setKeepsLayout(keeps);
    if (!fault.isEmpty()) {
        notices_.post({kind, tr("The setting is not stored: ") + fault, {}});
    }
}

// --- Saving -----------------------------------------------------------------------------

/// Nothing if the formatted text is to be written.
std::optional<std::string> KeepLayout::textToSave()
{
    replaced_ = document_.knownVersion();
    fault_.clear();
    isFormatted_ = true;
    if (!action_->isChecked() || replaced_ == nullptr || replaced_->bytes().empty()) {
        return std::nullopt;
    }
    const std::shared_ptr<FileVersion> base = isRestoring_ ? former_ : replaced_;
    try {
        std::vector<veltext::PathChange> paths;
        if (isUpgraded_ && upgraded_ == base) {
            paths = upgradePaths(base->bytes());
        }
        std::string text = layoutText(base->bytes(), document_.data(), paths);
        isFormatted_ = false;
        return text;
    } catch (const veltext::Error &error) {
        fault_ = error.message();
    } catch (const std::bad_alloc &) {
        fault_ = "memory error";
    }
    return std::nullopt;
}

void KeepLayout::noteSave(const std::string &target)
{
    if (target != document_.file()) {
        return;
    }
    if (!isFormatted_) {
        former_.reset();
        notices_.withdraw(kind);
        return;
    }
    // The formatted text may have empty comments, which end a line.
    const std::size_t before = commentsIn(replaced_.get());
    const std::size_t dropped =
        before - std::min(before, commentsIn(document_.knownVersion().get()));
    if (!fault_.empty()) {
        const QString text = tr("This save did not keep the layout: ") + fromBytes(fault_);
        notices_.post(
            {kind, dropped > 0 ? text + tr("; it dropped ") + commentsText(dropped) : text, {}});
    } else if (dropped > 0) {
        former_ = replaced_;
        droppedComments_ = dropped;
        postDropped(dropped);
    }
}

void KeepLayout::postDropped(std::size_t comments)
{
    notices_.post({kind,
                   tr("This save dropped ") + commentsText(comments),
                   {{tr("&Keep Them"), [this] { keepThem(); }}}});
}

void KeepLayout::keepThem()
{
    action_->setChecked(true);
    isRestoring_ = true;
    const bool isSaved = saveAgain_();
    isRestoring_ = false;
    if (!isSaved) {
        postDropped(droppedComments_);
    }
}

// --- The upgrade --------------------------------------------------------------------------

void KeepLayout::noteUpgrade()
{
    upgraded_ = document_.knownVersion();
    beforeUpgrade_ = document_.revisionOnDisk();
    isUpgraded_ = true;
}

// Undo passes the state before the upgrade, redo that after its first edit.
void KeepLayout::followUpgrade()
{
    if (beforeUpgrade_ == 0) {
        return;
    }
    if (document_.formerRevision() == beforeUpgrade_ && afterFirstEdit_ == 0) {
        afterFirstEdit_ = document_.revision();
    }
    if (document_.revision() == beforeUpgrade_) {
        isUpgraded_ = false;
    } else if (document_.revision() == afterFirstEdit_) {
        isUpgraded_ = true;
    }
}

} // namespace velEditor
