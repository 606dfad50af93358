// Undo and redo in the main window: their keys, and what they select.
#include "veleditor/src/Boxes.h"
#include "veleditor/src/Editor.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/WaitCursor.h"

#include <QAction>
#include <QApplication>
#include <QKeySequence>
#include <QTextDocument>

#include <optional>

namespace velEditor {

namespace {

/// The largest number of characters in a tip; a longer tip would be wider than most screens.
constexpr int longestLine = 100;

/// With more edits it is faster to make all rows again.
constexpr std::size_t fewEdits = 20;

/// The text of a tip. A long text becomes markup, because only markup has line breaks, and
/// text that looks like markup is escaped.
QString asTip(const QString &text)
{
    if (text.size() <= longestLine && !Qt::mightBeRichText(text)) {
        return text;
    }
    return Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal);
}

QAction *makeAction(QWidget &window, const QString &text, const char *name,
                    const QList<QKeySequence> &keys)
{
    auto *action = new QAction(text, &window);
    action->setObjectName(QString::fromLatin1(name));
    action->setShortcuts(keys);
    window.addAction(action); // for its keys
    return action;
}

/// Whether a dialog is open. Undo then does nothing, because the dialog may be about a row.
bool isBelowDialog()
{
    return QApplication::activeModalWidget() != nullptr;
}

} // namespace

void Editor::addUndo()
{
    undo_ = makeAction(*this, tr("&Undo"), "Undo", {QKeySequence(Qt::CTRL | Qt::Key_Z)});
    redo_ = makeAction(
        *this, tr("&Redo"), "Redo",
        {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
    connect(undo_, &QAction::triggered, this, &Editor::undo);
    connect(redo_, &QAction::triggered, this, &Editor::redo);
    connect(history_, &UndoHistory::stepsChanged, this, &Editor::showSteps);
    connect(history_, &UndoHistory::moved, tree_, &VELTree::showChange);
    showSteps();
}

void Editor::showSteps()
{
    undo_->setEnabled(history_->canUndo());
    redo_->setEnabled(history_->canRedo());
    undo_->setToolTip(history_->canUndo() ? asTip(tr("Undo: ") + history_->undoText())
                                          : tr("Nothing to undo"));
    redo_->setToolTip(history_->canRedo() ? asTip(tr("Redo: ") + history_->redoText())
                                          : tr("Nothing to redo"));
}

/// Undoes or redoes a step of this many edits. The rows follow each of a few edits, but
/// many edits at once, and then show the last one.
Message Editor::moveAlong(std::size_t edits, const std::function<Message()> &move)
{
    const WaitCursor wait;
    if (edits <= fewEdits) {
        return move();
    }
    Message failure;
    std::optional<Edit> last;
    const auto noting =
        connect(history_, &UndoHistory::moved, this, [&last](const Edit &edit) { last = edit; });
    tree_->showAtOnce([&] { failure = move(); });
    disconnect(noting);
    if (last) {
        tree_->showChange(*last);
    }
    return failure;
}

void Editor::undo()
{
    if (isBelowDialog()) {
        return;
    }
    const auto undo = [this] { return history_->undo(); };
    if (const Message failure = moveAlong(history_->undoSize(), undo)) {
        reportFailure(this, tr("Undo"), fromBytes(*failure));
    }
}

void Editor::redo()
{
    if (isBelowDialog()) {
        return;
    }
    const auto redo = [this] { return history_->redo(); };
    if (const Message failure = moveAlong(history_->redoSize(), redo)) {
        reportFailure(this, tr("Redo"), fromBytes(*failure));
    }
}

} // namespace velEditor
