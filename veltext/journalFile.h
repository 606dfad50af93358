// The files of journals (journal.h): one for each session of the editor on a file.
//
//     $XDG_STATE_HOME/veleditor/journal/NAME of the file.PROCESS
//
// The process that writes a journal owns it (ownedFile.h). A journal without an owner
// was left by a crash.
#pragma once

#include "veltext/journal.h"
#include "veltext/ownedFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace veltext {

/// The folder of the journals; empty if the environment names no place.
[[nodiscard]] std::string journalFolder();

/// A journal that is being written.
class JournalWriter
{
public:
    /// Begins a journal of a file in the folder: head, base and first change are on
    /// the disk afterwards. Throws an Error, and leaves nothing.
    JournalWriter(const std::string &folder, const JournalHead &head, std::string_view base,
                  const JournalChange &first);

    /// Appends a change, which a crash of this program does not lose. Throws an Error;
    /// the journal is then as it was before.
    void append(const JournalChange &change);

    /// Flushes what was appended to the disk, so that a power failure does not lose it
    /// either. Throws an Error.
    void flush();

    /// Removes the file; nothing can be appended any more.
    void remove() { file_.remove(); }

    [[nodiscard]] const std::string &path() const { return file_.path(); }

private:
    void write(std::string_view record);
    void cut();

    OwnedFile file_;
    std::int64_t size_ = 0;   ///< of all complete records, in bytes
    std::uint32_t count_ = 0; ///< of the changes
};

/// A journal that was left by a process that has ended. As long as the object lives,
/// no other process uses it.
struct LeftJournal
{
    OwnedFile file;
    Journal journal;
};

/// The journals of a file that belong to no process that runs, the last one first.
/// Those without a change are removed. `faults` gets a message for each one that
/// cannot be read.
[[nodiscard]] std::vector<LeftJournal>
leftJournals(const std::string &folder, const std::string &file, std::vector<std::string> *faults);

/// The journals of a file that programs are writing now, as far as they are written.
[[nodiscard]] std::vector<Journal> journalsInUse(const std::string &folder,
                                                 const std::string &file);

} // namespace veltext
