// Keeps the differences from the disk, and shows them.
#include "veleditor/src/ChangesFeature.h"

#include "veleditor/src/ChangesDialog.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/VELTree.h"

#include <QAction>
#include <QKeySequence>

namespace velEditor {

ChangesFeature::ChangesFeature(QWidget *window, Document &document, UndoHistory &history,
                               VELTree &tree)
    : QObject(window), window_(window), document_(document), history_(history),
      differences_(document)
{
    setObjectName(QStringLiteral("ChangesFeature"));
    tree.showDifferences(&differences_);
    connect(&document_, &Document::loaded, &differences_, &BaseDifferences::reset);
    connect(&document_, &Document::saved, &differences_, &BaseDifferences::reset);
    // Signals come before the last edit or the mark is complete.
    connect(&document_, &Document::versionKnown, this, &ChangesFeature::takeBase,
            Qt::QueuedConnection);
    connect(&document_, &Document::modifiedMarked, this, &ChangesFeature::catchUp,
            Qt::QueuedConnection);

    auto *action = new QAction(tr("Ch&anges\u2026"), window);
    action->setObjectName(QStringLiteral("Changes"));
    action->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_H));
    connect(action, &QAction::triggered, this, &ChangesFeature::show);
    window->addAction(action);
}

/// Compares again after a change that was not an edit, such as an upgrade when the file
/// was opened, and when the data has become that of the disk.
void ChangesFeature::catchUp()
{
    const bool isOnDisk = !document_.isModified() && !differences_.isEmpty();
    if (isOnDisk || differences_.isBehind()) {
        takeBase();
    }
}

/// From now on compares with the version that was loaded, saved or taken over last.
void ChangesFeature::takeBase()
{
    const std::shared_ptr<FileVersion> &version = document_.knownVersion();
    if (!document_.isModified() || version == nullptr ||
        differences_.compareWith(version->bytes(), document_.file())) {
        differences_.reset();
    }
}

void ChangesFeature::show()
{
    if (dialog_ == nullptr) {
        dialog_ = new ChangesDialog(window_, document_, history_, differences_);
    }
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}

} // namespace velEditor
