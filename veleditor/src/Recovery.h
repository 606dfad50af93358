// Offers the changes that a crash has left in journals, and says who else has the file
// open.
//
// For each journal there is a notice with the choices Restore, Show and Discard, the
// last journal first. Restore makes the changes as one undoable step; where the data
// and the journal differ from the journal's base in different ways, the data stays and
// the user sees a list. The journal stays until the user saves the file, quits without
// saving, or discards it.
//
// A journal with nothing that the data does not have is removed.
#pragma once

#include "veltext/journalFile.h"
#include "veltext/openMark.h"
#include "veltext/recovery.h"

#include <QObject>
#include <QString>

#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace velEditor {

class Document;
class NoticeBar;
class UndoHistory;

class Recovery : public QObject
{
    Q_OBJECT

public:
    /// For a document that is loaded; nothing that it gets is owned. `folder` has the
    /// journals. `window` is the parent of the lists.
    Recovery(Document &document, UndoHistory &history, NoticeBar &notice, std::string folder,
             QWidget *window);

    /// Other processes may use the journals that are left, and the file counts as closed.
    ~Recovery() override;

private:
    void markOpen();
    void find();
    void offer();
    void offerAgain();
    void restore();
    void show() const;
    void discard();
    void takeSave(const std::string &target);
    void takeEnd();
    [[nodiscard]] veltext::Recovery recovered() const;
    [[nodiscard]] bool isNeeded() const;
    [[nodiscard]] QString noticeText() const;
    void showResult(const veltext::Recovery &result) const;
    void report(const QString &text);

    Document &document_;   ///< not owned
    UndoHistory &history_; ///< not owned
    NoticeBar &notice_;    ///< not owned
    std::string folder_;
    QWidget *window_; ///< not owned
    std::unique_ptr<veltext::OpenMark> mark_;
    std::vector<veltext::LeftJournal> left_;     ///< the last one is offered now
    std::vector<veltext::LeftJournal> restored_; ///< their changes are in the data
};

} // namespace velEditor
