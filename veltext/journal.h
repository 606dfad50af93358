// The changes of a file that are not saved yet, in a file of their own.
//
// The editor appends each change before it goes on, so that a crash loses at most the
// change that was being made. One session of the editor on one file has one journal,
// from the first change to the next save. docs/journal.md describes the bytes.
//
// A journal contains the text that it begins with, its base: the file may have
// changed since. `recover` (recovery.h) puts the changes into a text.
#pragma once

#include "veltext/edit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace veltext {

/// What a journal is about.
struct JournalHead
{
    std::string file;          ///< the canonical path
    std::uint32_t process = 0; ///< of the editor
    std::string host;          ///< where that runs
    std::int64_t started = 0;  ///< when the journal was begun, in seconds since 1970 (UTC)
    bool isSafe = false;       ///< the editor was in safe mode
    std::string baseDigest;    ///< digestOf the base
};

/// All of the data as text, after a change that is not an edit.
struct WholeText
{
    std::string text;

    bool operator==(const WholeText &) const = default;
};

/// One change.
struct JournalChange
{
    std::int64_t time = 0;   ///< in seconds since 1970 (UTC)
    std::uint32_t steps = 0; ///< how many unsaved changes the user has made by then
    std::variant<Edit, WholeText> what;

    bool operator==(const JournalChange &) const = default;
};

/// What is intact of a journal.
struct Journal
{
    JournalHead head;
    std::optional<std::string> base; ///< nothing if it is damaged
    std::vector<JournalChange> changes;
    std::vector<std::string> faults; ///< a sentence for each thing that is damaged
};

/// Reads the bytes of a journal, whatever they are. A last record that is cut short is
/// not a fault. Throws an Error that calls it `name` if a later version of the
/// programs has written it.
[[nodiscard]] Journal parseJournal(std::string_view bytes, const std::string &name);

/// A new head for this process. `base` is the text of the file.
[[nodiscard]] JournalHead newHead(const std::string &file, std::string_view base, bool isSafe);

/// The records of a journal as bytes.
[[nodiscard]] std::string headRecord(const JournalHead &head);
[[nodiscard]] std::string baseRecord(std::string_view base);
/// `number` is 1 for the first change, 2 for the next one, and so on.
[[nodiscard]] std::string changeRecord(const JournalChange &change, std::uint32_t number);

} // namespace veltext
