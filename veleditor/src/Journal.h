// Keeps the unsaved changes of a document on the disk, so that a crash loses at most
// the change that is being made.
//
// Each edit is appended to the journal and flushed before the window handles the next
// event; the edits of one step are flushed together. A save of the document's file
// ends the journal, and so does undo back to what is on the disk, and the end of the
// document. The next change begins another one. veltext/journal.h describes journals.
//
// Data that something else than an edit has changed, such as an upgrade at the start,
// is in the journal as a whole with the edit that follows.
//
// Nothing here fails an edit. Where a change cannot be kept, `failed` says so once, and
// the journal tries again later: then with all of the data.
#pragma once

#include "veleditor/src/Edit.h"
#include "veltext/journalFile.h"

#include <QObject>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace velEditor {

class Document;
class UndoHistory;

class Journal : public QObject
{
    Q_OBJECT

public:
    /// For a document that is loaded. A document and a history that are not owned
    /// outlive the journal. A document whose file is not a regular one has no journal.
    Journal(Document &document, UndoHistory &history, std::string folder,
            QObject *parent = nullptr);

    /// Leaves the file if there are unsaved changes.
    ~Journal() override;

    /// Whether there are changes on the disk.
    [[nodiscard]] bool hasChanges() const { return writer_.has_value(); }

signals:
    /// The changes cannot be kept; `reason` is a sentence with the file. Comes once.
    void failed(const std::string &reason);

private:
    void note(const Edit &edit);
    void countSteps();
    [[nodiscard]] std::uint32_t unsavedSteps() const;
    void keep(const Edit &edit);
    void write(const Edit &edit);
    void settle();
    void takeSave(const std::string &target);
    void takeMark(bool isModified);
    void remove();
    void fail(const std::string &reason);

    Document &document_;                           ///< not owned
    UndoHistory &history_;                         ///< not owned
    std::string folder_;                           ///< empty if the environment names none
    std::optional<veltext::JournalWriter> writer_; ///< from the first change to the save
    bool isRegular_;
    std::uint64_t written_ = 0;   ///< the state that the journal leads to; 0 if none
    bool mustFlush_ = false;      ///< edits of a step that is not complete are written
    std::size_t savedSteps_ = 0;  ///< how many steps could be undone in the saved state
    std::size_t commonSteps_ = 0; ///< how many of these have not changed since
    std::size_t waits_ = 0;       ///< how many changes to pass over after a failure
    std::size_t failures_ = 0;    ///< since the last success
    bool hasFailed_ = false;      ///< `failed` was emitted
};

} // namespace velEditor
