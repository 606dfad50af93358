// The command file that is edited: the file, its text as it was loaded, the
// data, and whether that differs from what is on the disk.
//
// Every change of the data passes `apply`. Each is reported by one signal of its
// kind and then, as a complete edit, by `applied`; with its inverse the data can
// be brought back exactly. A document knows nothing of windows: whoever shows it
// listens to its signals.
//
// The data is that of the bridge's default instance, of which a process has one.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veleditor/src/CommandFile.h"
#include "veleditor/src/Edit.h"
#include "veleditor/src/TextEncoding.h"

#include <QObject>

#include <cstdint>
#include <optional>
#include <string>

namespace velEditor {

class Document : public QObject
{
    Q_OBJECT

public:
    /// Whether an edit marks the document as modified.
    enum class Marking { Modified, None };

    /// Nothing is read yet.
    explicit Document(std::string file, QObject *parent = nullptr);

    [[nodiscard]] const std::string &file() const { return file_; }

    // --- Loading -------------------------------------------------------------

    /// Reads the rule libraries that the environment names. Gives what is wrong with
    /// them, with file and line.
    [[nodiscard]] Message readLibraries();

    /// Reads the file into the data. Gives why it is refused, with the line.
    [[nodiscard]] Message load();

    /// The bytes of the file when it was loaded. None are kept of a pipe or
    /// device, which gives them only once.
    [[nodiscard]] const std::string &loadedText() const { return loadedText_; }

    /// In which encoding typed values are stored: that of the loaded text.
    [[nodiscard]] TextEncoding encoding() const { return encoding_; }

    /// From then on only what a running solver reads again may be changed.
    void setSafeMode();

    /// Give why units or bounds cannot be checked.
    [[nodiscard]] Message switchUnitsChecksOn();
    [[nodiscard]] Message switchBoundsChecksOn();

    // --- Data ------------------------------------------------------------------

    [[nodiscard]] const CommandData &data() const { return data_; }

    /// Makes a change. On success the signals follow. A failure gives what the
    /// database says; the change may have been made in part, nothing is
    /// reported, and the document is marked anyway.
    ///
    /// `oldText` of the edit, and `position` of what is deleted, are found here.
    [[nodiscard]] Message apply(Edit edit, Marking marking = Marking::Modified);

    /// Makes a change that is known to lead from the state `from` to the state `to`,
    /// as undo and redo do. The document is then marked if `to` is not on the disk.
    /// In any state but `from` this is a change like any other.
    [[nodiscard]] Message applyBetween(Edit edit, std::uint64_t from, std::uint64_t to);

    /// Reverts the edit that was applied last, which is an edit as well: the data is
    /// in the state before it, but the document stays marked. Nothing happens where
    /// there is none.
    [[nodiscard]] Message rollBack();

    /// Brings the data up to the current version of the language: none when
    /// nothing had to be changed, else the text that lists the changes. Neither
    /// marks the document nor reports: whoever calls tells the user first.
    [[nodiscard]] Message upgrade();

    // --- Unsaved changes -------------------------------------------------------

    /// The number of the state that the data is in. Two states that may differ
    /// never have the same one.
    [[nodiscard]] std::uint64_t revision() const { return revision_; }

    /// The state that the last edit began with: `revision()` where it changed nothing.
    [[nodiscard]] std::uint64_t formerRevision() const { return formerRevision_; }

    [[nodiscard]] bool isModified() const { return isMarked_; }

    /// The data may have been changed by something else than an edit.
    void setModified();

    /// The data is now what is on the disk.
    void clearModified();

    // --- Validation --------------------------------------------------------------
    // None when all is valid, else the findings, one a line.

    [[nodiscard]] Message validate();
    [[nodiscard]] Message validateObject(const std::string &path);
    [[nodiscard]] Message validateParameter(const std::string &path);

    // --- Saving --------------------------------------------------------------------

    /// Writes the data to a file; see writeCommandFile. What was written to its
    /// end is what is on the disk from then on, under whatever name.
    [[nodiscard]] SaveResult save(const std::string &target);

signals:
    /// The file was read: no earlier edit can be undone.
    void loaded();

    void valueChanged(const std::string &path, const std::string &value);

    /// A parameter or object has come: new after its siblings where `position`
    /// is `Edit::atEnd`, else put back at that place.
    void parameterAdded(const std::string &path, int position);
    void objectAdded(const std::string &path, int position);

    void parameterRemoved(const std::string &path);
    void objectRemoved(const std::string &path);

    /// All of the data may be other data.
    void reloaded();

    /// A change as it was made: complete, so that it has an inverse. Comes after
    /// the signal of its kind.
    void applied(const velEditor::Edit &edit);

    /// The document was marked, also when it was so before.
    void modifiedMarked(bool modified);

    /// Findings for what is at `path` and below it; none when it is valid.
    void validated(const std::string &path, const velEditor::Message &findings);

private:
    /// A state that is known, and whether it counts as modified.
    struct State
    {
        std::uint64_t revision;
        bool isMarked;
    };

    [[nodiscard]] Message make(Edit edit, Marking marking, std::optional<State> next = {});
    [[nodiscard]] Message change(Edit &edit);
    [[nodiscard]] Message addParameter(Edit &edit);
    [[nodiscard]] Message addObject(Edit &edit);
    [[nodiscard]] Message remove(Edit &edit);
    [[nodiscard]] Message replaceObject(Edit &edit);
    void report(const Edit &done, bool isNew);
    void mark(bool modified);
    Message reportFindings(const std::string &path, const char *findings);

    std::string file_;
    std::string loadedText_;
    TextEncoding encoding_ = TextEncoding::Utf8;
    CommandData data_;
    std::uint64_t revision_ = 0;
    std::uint64_t formerRevision_ = 0;
    std::uint64_t revisionOnDisk_ = 0;
    std::uint64_t lastRevision_ = 0; ///< the highest number so far
    bool isMarked_ = false;
    std::optional<Edit> lastEdit_; ///< what `rollBack` takes back
};

} // namespace velEditor
