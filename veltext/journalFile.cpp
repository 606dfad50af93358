// Writes journals, and finds those that a crash has left.
#include "veltext/journalFile.h"

#include "veltext/error.h"
#include "veltext/readFile.h"
#include "veltext/record.h"
#include "veltext/stateFolder.h"
#include "veltext/writeAll.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace veltext {

namespace {

std::int64_t lastTime(const Journal &journal)
{
    return journal.changes.back().time;
}

} // namespace

std::string journalFolder()
{
    return stateFolder("journal");
}

JournalWriter::JournalWriter(const std::string &folder, const JournalHead &head,
                             std::string_view base, const JournalChange &first)
    : file_(OwnedFile::create(folder, stateNameOf(head.file)))
{
    try {
        if (base.size() > longestRecord) {
            throw Error(head.file, 0, "is too long for a journal");
        }
        write(headRecord(head));
        write(baseRecord(base));
        write(changeRecord(first, ++count_));
        flush();
    } catch (...) {
        file_.remove();
        throw;
    }
}

void JournalWriter::write(std::string_view record)
{
    if (const int error = writeAll(file_.descriptor(), record)) {
        throw systemError(file_.path(), error);
    }
    size_ += static_cast<std::int64_t>(record.size());
}

void JournalWriter::append(const JournalChange &change)
{
    try {
        write(changeRecord(change, count_ + 1));
        ++count_;
    } catch (const Error &) {
        cut();
        throw;
    }
}

/// Removes what a failed write has left, so that the next record follows a whole one.
void JournalWriter::cut()
{
    // Where this fails, the reader finds the next record anyway, and reports the gap.
    static_cast<void>(!ftruncate(file_.descriptor(), size_));
    static_cast<void>(lseek(file_.descriptor(), size_, SEEK_SET));
}

void JournalWriter::flush()
{
    if (fdatasync(file_.descriptor()) != 0) {
        throw systemError(file_.path(), errno);
    }
}

std::vector<LeftJournal> leftJournals(const std::string &folder, const std::string &file,
                                      std::vector<std::string> *faults)
{
    std::vector<LeftJournal> left;
    for (const std::string &path : ownedFiles(folder, stateNameOf(canonicalPath(file)))) {
        std::optional<OwnedFile> owned = OwnedFile::take(path);
        if (!owned) {
            continue;
        }
        try {
            const std::string bytes = readBytes(owned->descriptor(), path);
            Journal journal = parseJournal(bytes, path);
            if (!journal.changes.empty()) {
                left.push_back({std::move(*owned), std::move(journal)});
            } else if (journal.faults.empty()) {
                owned->remove(); // nothing was lost
            } else {
                faults->push_back(path + ": is damaged; nothing in it can be used");
            }
        } catch (const Error &error) {
            faults->push_back(error.message());
        }
    }
    std::stable_sort(left.begin(), left.end(), [](const LeftJournal &a, const LeftJournal &b) {
        return lastTime(a.journal) > lastTime(b.journal);
    });
    return left;
}

std::vector<Journal> journalsInUse(const std::string &folder, const std::string &file)
{
    std::vector<Journal> journals;
    for (const std::string &path : ownedFiles(folder, stateNameOf(canonicalPath(file)))) {
        if (OwnedFile::take(path)) {
            continue;
        }
        try {
            Journal journal = parseJournal(readBytes(path), path);
            if (!journal.changes.empty()) {
                journals.push_back(std::move(journal));
            }
        } catch (const Error &) {
            continue; // it is gone by now, or written by a later version
        }
    }
    return journals;
}

} // namespace veltext
