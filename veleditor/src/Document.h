// The command file that is edited: its name, its loaded text, its data, and whether
// the data differs from the file on the disk.
//
// Every change of the data goes through `apply`. It emits one signal for the kind of
// change, then `applied` with the complete edit; applying the inverse of that edit
// restores the data exactly. A document does not know any window; windows connect to
// its signals.
//
// The data is that of the bridge's default session; a process has one.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veleditor/src/CommandFile.h"
#include "veleditor/src/Edit.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/src/TextEncoding.h"

#include <QObject>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velEditor {

class Document : public QObject
{
    Q_OBJECT

public:
    /// Whether an edit marks the document as modified.
    enum class Marking { Modified, None };

    /// Reads nothing yet.
    explicit Document(std::string file, QObject *parent = nullptr);

    [[nodiscard]] const std::string &file() const { return file_; }

    // --- Loading -------------------------------------------------------------

    /// Reads the rule libraries that the environment names. Returns their faults, with
    /// file and line.
    [[nodiscard]] Message readLibraries();

    /// Reads the file into the data. Returns why it is refused, with the line.
    [[nodiscard]] Message load();

    /// The bytes of the file when it was loaded or taken over. Empty for a pipe or
    /// device, which can be read only once.
    [[nodiscard]] const std::string &loadedText() const;

    /// The encoding of the loaded text; typed values are stored in it.
    [[nodiscard]] TextEncoding encoding() const { return encoding_; }

    /// From now on only values that a running solver reads again can be changed.
    void setSafeMode();
    [[nodiscard]] bool isSafeMode() const { return isSafeMode_; }

    /// Return why units or bounds cannot be checked.
    [[nodiscard]] Message switchUnitsChecksOn();
    [[nodiscard]] Message switchBoundsChecksOn();

    // --- Data ------------------------------------------------------------------

    [[nodiscard]] const CommandData &data() const { return data_; }

    /// Makes a change and emits its signals. On failure returns the database's
    /// message and emits no signal; part of the change may have been made, and the
    /// document is marked as modified.
    ///
    /// Fills in `oldText` of the edit and, for a deletion, its place. An edit that adds
    /// an item to an object that does not exist makes that object too, and is then the
    /// edit that adds the topmost object that it has made.
    [[nodiscard]] Message apply(Edit edit, Marking marking = Marking::Modified);

    /// Makes a change that is known to lead from the state `from` to the state `to`,
    /// as undo and redo do. The document is then marked if `to` is not on the disk.
    /// In any state but `from` this is a change like any other.
    [[nodiscard]] Message applyBetween(Edit edit, std::uint64_t from, std::uint64_t to);

    /// Reverts the edit that was applied last, which is an edit as well: the data is
    /// in the state before it, but the document stays marked. Nothing happens where
    /// there is none.
    [[nodiscard]] Message rollBack();

    /// Upgrades the data to the current version of the language. Returns the list of
    /// changes as text, none if nothing had to change. Neither marks the document nor
    /// emits signals, because the caller informs the user first.
    [[nodiscard]] Message upgrade();

    /// The user was informed of an upgrade and the rows show it: emits `upgraded`.
    void announceUpgrade(const std::string &changes);

    /// Reports complete edits that were made in another way: they led from the state
    /// `from` to the current one. Emits `applied` for each, and no other signal.
    void reportMade(const std::vector<Edit> &edits, std::uint64_t from);

    // --- Unsaved changes -------------------------------------------------------

    /// The number of the state that the data is in. Two states that may differ
    /// never have the same one.
    [[nodiscard]] std::uint64_t revision() const { return revision_; }

    /// The state that the last edit began with: `revision()` where it changed nothing.
    [[nodiscard]] std::uint64_t formerRevision() const { return formerRevision_; }

    /// The state that was loaded or saved last.
    [[nodiscard]] std::uint64_t revisionOnDisk() const { return revisionOnDisk_; }

    /// A number for a state in which the data has not been yet, for `applyBetween`.
    [[nodiscard]] std::uint64_t nextRevision() { return ++lastRevision_; }

    [[nodiscard]] bool isModified() const { return isMarked_; }

    /// The data may have been changed by something else than an edit.
    void setModified();

    /// The data is now what is on the disk.
    void clearModified();

    // --- The file on the disk ----------------------------------------------------

    /// The version of the file that was loaded, saved or taken over last: what the
    /// file holds unless another program has changed it. Null for a pipe or device.
    [[nodiscard]] const std::shared_ptr<FileVersion> &knownVersion() const { return known_; }

    /// A version that another program has written is now the known one, and its bytes
    /// are the loaded text. If the data is that of this version, the document is no
    /// longer modified, else it is until the next save.
    void takeOver(std::shared_ptr<FileVersion> version, bool isData);

    // --- Validation --------------------------------------------------------------
    // They return the findings, one per line; none if there are none.

    [[nodiscard]] Message validate();
    [[nodiscard]] Message validateObject(const std::string &path);
    [[nodiscard]] Message validateParameter(const std::string &path);

    // --- Saving --------------------------------------------------------------------

    /// Writes the data to a file; see writeCommandFile. If all of it was written, the
    /// document is no longer modified, whatever the name of the file. Before its own
    /// file is replaced, what that holds is kept in its history.
    [[nodiscard]] SaveResult save(const std::string &target);

    /// Gives the bytes that a save writes to the document's own file; nothing for the
    /// formatted text.
    using TextMaker = std::function<std::optional<std::string>()>;
    void setTextMaker(TextMaker maker) { makeText_ = std::move(maker); }

    /// Saves to the document's own file. The backup stays that of the save before, unless
    /// another program has written to the file since.
    [[nodiscard]] SaveResult saveAgain();

    /// Nothing follows: the user has agreed to lose what is not saved.
    void close();

signals:
    /// The file was read: no earlier edit can be undone.
    void loaded();

    void valueChanged(const std::string &path, const std::string &value);

    /// A parameter or object was added: after its siblings if `position` is
    /// `Edit::atEnd`, otherwise at that place.
    void parameterAdded(const std::string &path, int position);
    void objectAdded(const std::string &path, int position);

    void parameterRemoved(const std::string &path);
    void objectRemoved(const std::string &path);

    /// All of the data may have changed.
    void reloaded();

    /// The loaded data was upgraded and marked. `changes` is the list of what was
    /// changed.
    void upgraded(const std::string &changes);

    /// The complete edit, which has an inverse. Comes after the signal of its kind.
    void applied(const velEditor::Edit &edit);

    /// What a save is about to replace was put into the history of the file; if that
    /// failed, `fault` says why. `isUnseen`: another program wrote it, and it was
    /// neither loaded nor taken over.
    void versionKept(bool isUnseen, const velEditor::Message &fault);

    /// There is another known version.
    void versionKnown();

    /// All of the data was written to `target`, which may be another file.
    void saved(const std::string &target);

    /// The document is no longer needed; see `close`.
    void closed();

    /// The mark was set, perhaps to the same value as before.
    void modifiedMarked(bool modified);

    /// The findings for the item at `path` and everything below it; none if it is valid.
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
    [[nodiscard]] Edit added(Edit::Kind kind, const std::string &path,
                             const std::string &text) const;
    void noteItsPlace(Edit &edit, bool isParameter) const;
    void fitIn(Edit &edit) const;
    void report(const Edit &done, bool isNew);
    void keepVersion();
    void mark(bool modified);
    [[nodiscard]] SaveResult write(const std::string &target, bool keepsBackup);
    Message reportFindings(const std::string &path, const char *findings);

    std::string file_;
    std::shared_ptr<FileVersion> loaded_; ///< null for a pipe or device
    std::shared_ptr<FileVersion> known_;  ///< the same
    TextMaker makeText_;                  ///< may be empty
    TextEncoding encoding_ = TextEncoding::Utf8;
    CommandData data_;
    std::uint64_t revision_ = 0;
    std::uint64_t formerRevision_ = 0;
    std::uint64_t revisionOnDisk_ = 0;
    std::uint64_t lastRevision_ = 0; ///< the highest number so far
    bool isMarked_ = false;
    bool isSafeMode_ = false;
    std::optional<Edit> lastEdit_; ///< the edit that `rollBack` reverts
};

} // namespace velEditor
