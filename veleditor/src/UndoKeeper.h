// Lets undo and redo go on where they were when a file was closed.
//
// After each save and at the end, the steps around the state on the disk are kept
// (UndoFile.h). When the file is opened with the text that it had, they are there
// again. What cannot be kept or read is one notice, and nothing else fails.
#pragma once

#include <QObject>

#include <string>

namespace velEditor {

class Document;
class NoticeBar;
class UndoHistory;
struct UndoSteps;

class UndoKeeper : public QObject
{
    Q_OBJECT

public:
    /// Gets the steps of a document that was just loaded. None of the arguments is
    /// owned; all outlive the keeper.
    UndoKeeper(Document &document, UndoHistory &history, NoticeBar &notice, QObject *parent);

private:
    [[nodiscard]] bool canKeep() const;
    void restore();
    void forgetIfUnknown();
    void keepAfterSave(const std::string &target);
    void keepAtEnd();
    void keep(const UndoSteps &steps);
    void report(const QString &text);

    Document &document_;
    UndoHistory &history_;
    NoticeBar &notice_;
    bool areNew_ = false;     ///< there may be steps that are not kept
    bool isReported_ = false; ///< there was a notice about a failure
};

} // namespace velEditor
