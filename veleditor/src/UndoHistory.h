// The changes of a document that can be undone, and those that can be redone.
//
// A history listens to its document: every edit that changes the data becomes a step. Undo
// and redo also apply edits, so everything that follows the document follows them too. The
// number of steps has no limit.
//
// An edit that is rolled back does not become a step. Loading a file begins a new history.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veleditor/src/Edit.h"
#include "veleditor/src/UndoSteps.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velEditor {

class Document;

class UndoHistory : public QObject
{
    Q_OBJECT

public:
    /// Has no steps yet. The document (not owned) must outlive the history.
    explicit UndoHistory(Document &document, QObject *parent = nullptr);

    [[nodiscard]] bool canUndo() const { return !done_.empty() && groupDepth_ == 0; }
    [[nodiscard]] bool canRedo() const { return !undone_.empty() && groupDepth_ == 0; }

    /// How many steps can be undone. During the edits of a step: after it.
    [[nodiscard]] std::size_t stepCount() const { return done_.size(); }

    /// The edits of a step are being undone or redone.
    [[nodiscard]] bool isMoving() const { return isMoving_; }

    /// More edits may belong to the step of the last one.
    [[nodiscard]] bool isBusy() const { return groupDepth_ > 0 || isMoving_; }

    /// The name of the step that `undo` or `redo` is about: such as
    /// "Normal Speed = 2.5 [m s^-1]", "Add Title = x" or "Delete Title", or the name
    /// of a group. Empty if there is no such step.
    [[nodiscard]] QString undoText() const;
    [[nodiscard]] QString redoText() const;

    /// How many edits that step has; 0 if there is no such step.
    [[nodiscard]] std::size_t undoSize() const;
    [[nodiscard]] std::size_t redoSize() const;

    /// Undo the last step, or redo the one that was undone last; nothing happens
    /// if there is none, or inside a group. What was changed is validated, as
    /// after the edit itself, but findings undo nothing. After a failure, which
    /// gives what the database says, there are no steps any more.
    [[nodiscard]] Message undo();
    [[nodiscard]] Message redo();

    void clear();

    // --- Groups ------------------------------------------------------------------

    /// All edits until the matching `endGroup` are one step with this name. A group inside
    /// another group is a part of it. A group without edits is not a step.
    void beginGroup(const QString &name);
    void endGroup();

    // --- Steps for another session -------------------------------------------------

    /// The steps that lead to a state of the document and away from it, as far as every
    /// change on the way is known. They have at most about `mostBytes` bytes: the steps
    /// that are farthest away are left out, and undone ones first. Nothing if no step
    /// begins or ends with this state, or inside a group.
    [[nodiscard]] std::optional<UndoSteps> stepsAround(std::uint64_t revision,
                                                       std::size_t mostBytes) const;

    /// Takes steps in place of all others, as those around the state in which the
    /// document is now.
    void restore(const UndoSteps &steps);

signals:
    /// The steps may have changed.
    void stepsChanged();

    /// A step was undone or redone. `edit` is the last edit that was applied for this.
    void moved(const velEditor::Edit &edit);

private:
    /// An edit between two states of the document.
    struct Change
    {
        Edit edit;
        std::uint64_t before;
        std::uint64_t after;
    };

    /// Changes in the order in which they were made.
    struct Step
    {
        QString name; ///< of a group; a single edit has no name here
        std::vector<Change> changes;
    };

    [[nodiscard]] static QString nameOf(const std::vector<Step> &steps);
    [[nodiscard]] static bool isUnbroken(const Step &step);
    [[nodiscard]] static UndoStep valueOf(const Step &step);
    [[nodiscard]] static bool keep(const Step &step, std::size_t &room,
                                   std::vector<UndoStep> &kept);
    [[nodiscard]] std::vector<const Step *> allSteps() const;
    [[nodiscard]] Step stepTo(const UndoStep &step, std::uint64_t after);
    [[nodiscard]] Step stepFrom(const UndoStep &step, std::uint64_t before);
    [[nodiscard]] bool isRollBack() const;
    void note(const Edit &edit);
    void dropRolledBack();
    [[nodiscard]] Message make(const Edit &edit, std::uint64_t from, std::uint64_t to);
    Message finish(const Edit &last, Message failure);

    Document &document_; ///< not owned
    std::vector<Step> done_;
    std::vector<Step> undone_;
    std::vector<Step> discarded_; ///< undone steps, kept while the last edit may be rolled back
    int groupDepth_ = 0;
    bool isOpen_ = false;   ///< the last step is a group that gets the next edit
    bool isMoving_ = false; ///< `undo` or `redo` is applying edits
    QString groupName_;
};

/// Makes all edits during its lifetime one step.
class UndoGroup
{
public:
    UndoGroup(UndoHistory &history, const QString &name) : history_(history)
    {
        history_.beginGroup(name);
    }
    ~UndoGroup() { history_.endGroup(); }

    UndoGroup(const UndoGroup &) = delete;
    UndoGroup &operator=(const UndoGroup &) = delete;

private:
    UndoHistory &history_;
};

} // namespace velEditor
