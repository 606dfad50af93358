// Opens the dialog with the versions, and says once what is wrong with them.
#include "veleditor/src/HistoryFeature.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/HistoryDialog.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/Text.h"

#include <QAction>
#include <QKeySequence>

#include <utility>

namespace velEditor {

HistoryFeature::HistoryFeature(QWidget *window, Document &document, UndoHistory &history,
                               NoticeBar &notice)
    : QObject(window), window_(window), document_(document), history_(history), notice_(notice)
{
    setObjectName(QStringLiteral("HistoryFeature"));
    connect(&document_, &Document::versionKept, this, &HistoryFeature::reportFault);

    auto *action = new QAction(tr("H&istory\u2026"), window);
    action->setObjectName(QStringLiteral("History"));
    action->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
    connect(action, &QAction::triggered, this, &HistoryFeature::show);
    window->addAction(action);
}

void HistoryFeature::reportFault(bool, const Message &fault)
{
    if (fault && !std::exchange(hasReported_, true)) {
        notice_.post({QStringLiteral("state"), fromBytes(*fault), {}});
    }
}

void HistoryFeature::show()
{
    if (dialog_ == nullptr) {
        dialog_ = new HistoryDialog(window_, document_, history_);
    }
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}

} // namespace velEditor
