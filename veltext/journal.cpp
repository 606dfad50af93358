// The records of a journal: head, base, changes.
#include "veltext/journal.h"

#include "veltext/digest.h"
#include "veltext/editRecord.h"
#include "veltext/error.h"
#include "veltext/fields.h"
#include "veltext/hostName.h"
#include "veltext/record.h"
#include "veltext/stateFolder.h"

#include <ctime>
#include <utility>

#include <unistd.h>

namespace veltext {

namespace {

constexpr std::uint32_t formatNumber = 1;
constexpr std::uint32_t safeFlag = 1;

// The kinds of records.
constexpr char headKind = 'H';
constexpr char baseKind = 'B';
constexpr char editKind = 'E';
constexpr char wholeKind = 'W';

/// Takes the records of a journal one by one. After damage, edits do not fit what came
/// before them; only the text of all data does.
class JournalReader
{
public:
    JournalReader(std::string_view bytes, const std::string &name) : reader_(bytes), name_(name) {}

    Journal read()
    {
        while (const std::optional<Record> record = reader_.next()) {
            if (reader_.skipped() > 0) {
                reportGap();
            }
            take(*record);
        }
        if (reader_.skipped() > 0 && !reader_.isTorn()) {
            reportGap();
        }
        if (unused_ > 0) {
            report(std::to_string(unused_) + " changes after the damage are not used");
        }
        return std::move(journal_);
    }

private:
    void report(const std::string &sentence) { journal_.faults.push_back(sentence); }

    void reportGap() { report(std::to_string(reader_.skipped()) + " bytes are damaged"); }

    void take(const Record &record)
    {
        FieldReader fields(record.body);
        switch (record.kind) {
        case headKind:
            return takeHead(fields);
        case baseKind:
            journal_.base = std::string(record.body);
            return;
        case editKind:
        case wholeKind:
            return takeChange(record.kind, fields);
        default:
            report("a record has the unknown kind " + std::to_string(record.kind));
        }
    }

    void takeHead(FieldReader &fields)
    {
        if (fields.number() != formatNumber) {
            throw Error(name_, 0, "was written by a later version of the programs");
        }
        JournalHead &head = journal_.head;
        head.isSafe = (fields.number() & safeFlag) != 0;
        head.started = static_cast<std::int64_t>(fields.longNumber());
        head.process = fields.number();
        head.host = fields.text();
        head.file = fields.text();
        head.baseDigest = fields.text();
    }

    void takeChange(char kind, FieldReader &fields)
    {
        JournalChange change;
        const std::uint32_t number = fields.number();
        isBroken_ = isBroken_ || number != lastNumber_ + 1;
        lastNumber_ = number;
        change.time = static_cast<std::int64_t>(fields.longNumber());
        change.steps = fields.number();
        if (kind == wholeKind) {
            change.what = WholeText{fields.text()};
            isBroken_ = false;
            unused_ = 0;
        } else {
            change.what = takeEdit(&fields);
        }
        isBroken_ = isBroken_ || !fields.isAtEnd();
        if (isBroken_) {
            ++unused_;
        } else {
            journal_.changes.push_back(std::move(change));
        }
    }

    RecordReader reader_;
    const std::string &name_;
    Journal journal_;
    std::uint32_t lastNumber_ = 0; ///< of the change before
    bool isBroken_ = false;        ///< edits do not fit any more
    std::size_t unused_ = 0;       ///< intact changes after the damage
};

} // namespace

Journal parseJournal(std::string_view bytes, const std::string &name)
{
    return JournalReader(bytes, name).read();
}

JournalHead newHead(const std::string &file, std::string_view base, bool isSafe)
{
    JournalHead head;
    head.file = canonicalPath(file);
    head.process = static_cast<std::uint32_t>(getpid());
    head.host = hostName();
    head.started = std::time(nullptr);
    head.isSafe = isSafe;
    head.baseDigest = digestOf(base);
    return head;
}

std::string headRecord(const JournalHead &head)
{
    std::string body;
    putNumber(&body, formatNumber);
    putNumber(&body, head.isSafe ? safeFlag : 0);
    putLongNumber(&body, static_cast<std::uint64_t>(head.started));
    putNumber(&body, head.process);
    putText(&body, head.host);
    putText(&body, head.file);
    putText(&body, head.baseDigest);
    return recordOf(headKind, body);
}

std::string baseRecord(std::string_view base)
{
    return recordOf(baseKind, base);
}

std::string changeRecord(const JournalChange &change, std::uint32_t number)
{
    std::string body;
    putNumber(&body, number);
    putLongNumber(&body, static_cast<std::uint64_t>(change.time));
    putNumber(&body, change.steps);
    if (const auto *whole = std::get_if<WholeText>(&change.what)) {
        putText(&body, whole->text);
        return recordOf(wholeKind, body);
    }
    putEdit(&body, std::get<Edit>(change.what));
    return recordOf(editKind, body);
}

} // namespace veltext
