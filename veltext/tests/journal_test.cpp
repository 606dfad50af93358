// Journals: what is written comes back, and what is intact is used whatever happened
// to the rest.
#include "veltext/journalFile.h"

#include "veltext/digest.h"
#include "veltext/error.h"
#include "veltext/readFile.h"
#include "veltext/record.h"
#include "veltext/recovery.h"
#include "veltext/stateFolder.h"
#include "veltext/tests/historyFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace veltext {
namespace {

namespace fs = std::filesystem;

const std::string base = "FLOW: a\n  # kept\n  x = 1\n  y = 2\nEND\n";

Edit setting(const std::string &path, const std::string &from, const std::string &to)
{
    return {Edit::Kind::SetValue, path, from, to, Edit::atEnd};
}

/// x becomes 2, 3 and 4, then z is added.
const std::vector<JournalChange> changes = {
    {100, 1, setting("/FLOW:a/x", "1", "2")},
    {101, 2, setting("/FLOW:a/x", "2", "3")},
    {102, 3, setting("/FLOW:a/x", "3", "4")},
    {103, 4, Edit{Edit::Kind::AddParameter, "/FLOW:a/z", "", "new", 2}},
};

/// The text after so many of the changes.
std::string textAfter(std::size_t count)
{
    const std::string x = std::to_string(std::min<std::size_t>(count, 3) + 1);
    return "FLOW: a\n  # kept\n  x = " + x + "\n  y = 2\n" + (count == 4 ? "  z = new\n" : "") +
           "END\n";
}

class JournalTest : public testing::Test
{
protected:
    [[nodiscard]] std::string folder() const { return folder_.path() / "state" / "journal"; }

    [[nodiscard]] JournalHead head() const { return newHead(folder_.file(), base, false); }

    /// The bytes of a journal, and where each of its records ends.
    [[nodiscard]] std::string bytes(std::vector<std::size_t> *ends = nullptr) const
    {
        std::string bytes = headRecord(head());
        const auto note = [&] {
            if (ends != nullptr) {
                ends->push_back(bytes.size());
            }
        };
        note();
        bytes += baseRecord(base);
        note();
        for (std::size_t i = 0; i < changes.size(); ++i) {
            bytes += changeRecord(changes[i], static_cast<std::uint32_t>(i + 1));
            note();
        }
        return bytes;
    }

    [[nodiscard]] std::vector<LeftJournal> left() const
    {
        return leftJournals(folder(), folder_.file(), &faults);
    }

    mutable std::vector<std::string> faults;
    test::HistoryFolder folder_;
};

TEST_F(JournalTest, ComesBackAsItWasWritten)
{
    const Journal journal = parseJournal(bytes(), "journal");
    EXPECT_EQ(journal.head.file, canonicalPath(folder_.file()));
    EXPECT_EQ(journal.head.process, static_cast<std::uint32_t>(getpid()));
    EXPECT_NE(journal.head.host, "");
    EXPECT_FALSE(journal.head.isSafe);
    EXPECT_EQ(journal.head.baseDigest, digestOf(base));
    EXPECT_EQ(journal.base, base);
    EXPECT_EQ(journal.changes, changes);
    EXPECT_TRUE(journal.faults.empty());
    EXPECT_TRUE(parseJournal(headRecord(newHead("x", "", true)), "journal").head.isSafe);
}

TEST_F(JournalTest, AnyLengthGivesTheChangesThatAreComplete)
{
    std::vector<std::size_t> ends;
    const std::string whole = bytes(&ends);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const Journal journal = parseJournal(std::string_view(whole).substr(0, size), "journal");
        const auto complete = static_cast<std::size_t>(
            std::upper_bound(ends.begin(), ends.end(), size) - ends.begin());
        const std::size_t count = complete < 2 ? 0 : complete - 2;
        ASSERT_EQ(journal.changes.size(), count) << size;
        EXPECT_TRUE(journal.faults.empty()) << size;
        if (count > 0) {
            EXPECT_EQ(recover(journal, base, "duct.vel").bytes, textAfter(count)) << size;
        }
    }
}

TEST_F(JournalTest, AFlippedByteLosesNothingBeforeIt)
{
    std::vector<std::size_t> ends;
    const std::string whole = bytes(&ends);
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const int bits : {0x01, 0x2a, 0xff}) {
            std::string damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ bits);
            const Journal journal = parseJournal(damaged, "journal");
            const auto record = static_cast<std::size_t>(
                std::upper_bound(ends.begin(), ends.end(), place) - ends.begin());
            const std::size_t count = record < 2 ? changes.size() : record - 2;
            ASSERT_EQ(journal.changes.size(), count) << place;
            // The last record may look as if it was cut short, which is not a fault.
            EXPECT_TRUE(!journal.faults.empty() || record + 1 == ends.size()) << place;
            if (count == 0) {
                continue;
            }
            if (record == 0) { // what the file is and its digest are lost
                EXPECT_EQ(recover(journal, base, "duct.vel").bytes, textAfter(count));
            } else if (record == 1) { // the base is lost, but the file is the same
                EXPECT_EQ(recover(journal, base, "duct.vel").bytes, textAfter(count));
                EXPECT_THROW((void)recover(journal, base + " ", "duct.vel"), Error);
            } else {
                EXPECT_EQ(recover(journal, base, "duct.vel").bytes, textAfter(count)) << place;
            }
        }
    }
}

TEST_F(JournalTest, TheTextOfAllDataMakesUpForDamage)
{
    const JournalChange whole = {104, 5, WholeText{"FLOW: a\n  x = 9\n  y = 2\nEND\n"}};
    std::string damaged = bytes();
    damaged[damaged.size() - 1] = '?';
    damaged += changeRecord({103, 4, setting("/FLOW:a/x", "4", "8")}, 5) + changeRecord(whole, 6) +
               changeRecord({105, 6, setting("/FLOW:a/y", "2", "5")}, 7);
    const Journal journal = parseJournal(damaged, "journal");
    ASSERT_EQ(journal.changes.size(), 5U);
    EXPECT_EQ(journal.changes[3], whole);
    EXPECT_EQ(journal.faults.size(), 1U);
    EXPECT_EQ(recover(journal, base, "duct.vel").bytes,
              "FLOW: a\n  # kept\n  x = 9\n  y = 5\nEND\n");
}

TEST_F(JournalTest, ALaterFormatIsRefused)
{
    std::string body = headRecord(head()).substr(recordHeadSize);
    body[0] = 2;
    try {
        static_cast<void>(parseJournal(recordOf('H', body), "journal"));
        FAIL();
    } catch (const Error &error) {
        EXPECT_EQ(error.message(), "journal: was written by a later version of the programs");
    }
}

TEST_F(JournalTest, MergesIntoAFileThatHasChanged)
{
    const Journal journal = parseJournal(bytes(), "journal");
    const Recovery same = recover(journal, base, "duct.vel");
    EXPECT_FALSE(same.isMerged);
    EXPECT_TRUE(same.hasChanges);
    const Recovery merged =
        recover(journal, "FLOW: a\n  x = 1\n  y = 7 # other\nEND\nB:\nEND\n", "duct.vel");
    EXPECT_TRUE(merged.isMerged);
    EXPECT_EQ(merged.bytes, "FLOW: a\n  x = 4\n  y = 7 # other\n  z = new\nEND\nB:\nEND\n");
    EXPECT_TRUE(merged.conflicts.empty());
    const Recovery conflict = recover(journal, "FLOW: a\n  x = 8\n  y = 2\nEND\n", "duct.vel");
    EXPECT_EQ(conflict.bytes, "FLOW: a\n  x = 8\n  y = 2\n  z = new\nEND\n");
    ASSERT_EQ(conflict.conflicts.size(), 1U);
    EXPECT_EQ(conflict.conflicts[0].path, "/FLOW:a/x");
    EXPECT_EQ(conflict.conflicts[0].kept, "8");
    EXPECT_EQ(conflict.conflicts[0].inJournal, "4");
    const Recovery done = recover(journal, textAfter(4), "duct.vel");
    EXPECT_FALSE(done.hasChanges);
    EXPECT_EQ(done.bytes, textAfter(4));
    EXPECT_EQ(recover(journal, std::nullopt, "duct.vel").bytes, textAfter(4));
    EXPECT_THROW((void)recover(journal, "FLOW: a\n", "duct.vel"), Error);
}

TEST_F(JournalTest, AChangeThatDoesNotFitEndsIt)
{
    Journal journal = parseJournal(bytes(), "journal");
    journal.changes[1].what = setting("/FLOW:a/none", "", "1");
    const Recovery result = recover(journal, base, "duct.vel");
    EXPECT_EQ(result.bytes, textAfter(1));
    ASSERT_EQ(result.faults.size(), 1U);
    EXPECT_EQ(result.faults[0].find("3 changes cannot be made: /FLOW:a/none: "), 0U)
        << result.faults[0];
}

TEST_F(JournalTest, BelongsToItsWriter)
{
    std::optional<JournalWriter> writer(std::in_place, folder(), head(), base, changes[0]);
    writer->append(changes[1]);
    writer->flush();
    EXPECT_TRUE(left().empty());
    EXPECT_EQ(journalsInUse(folder(), folder_.file()).size(), 1U);
    struct stat status = {};
    ASSERT_EQ(stat(writer->path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    ASSERT_EQ(stat(folder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    EXPECT_EQ(fs::path(writer->path()).filename(),
              stateNameOf(canonicalPath(folder_.file())) + '.' + std::to_string(getpid()));

    // A second journal of the same process, and one of another file.
    const JournalWriter second(folder(), head(), base, changes[0]);
    EXPECT_NE(second.path(), writer->path());
    writer.reset();
    {
        const std::vector<LeftJournal> found = left();
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found[0].journal.changes, (std::vector<JournalChange>{changes[0], changes[1]}));
        EXPECT_TRUE(left().empty()); // it has an owner again
    }
    EXPECT_TRUE(leftJournals(folder(), folder_.file() + 'x', &faults).empty());
    std::vector<LeftJournal> found = left();
    found[0].file.remove();
    found.clear();
    EXPECT_TRUE(left().empty());
    EXPECT_TRUE(faults.empty());
}

TEST_F(JournalTest, TheLastJournalComesFirst)
{
    std::optional<JournalWriter> late(std::in_place, folder(), head(), base, changes[2]);
    std::optional<JournalWriter> early(std::in_place, folder(), head(), base, changes[0]);
    late.reset();
    early.reset();
    const std::vector<LeftJournal> found = left();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].journal.changes[0].time, 102);
}

TEST_F(JournalTest, WhatHasNoChangeIsRemovedOrReported)
{
    const std::string name = folder() + '/' + stateNameOf(canonicalPath(folder_.file())) + ".1";
    fs::create_directories(folder());
    test::HistoryFolder::write(name, headRecord(head()) + "\x89V");
    EXPECT_TRUE(left().empty());
    EXPECT_FALSE(fs::exists(name));
    test::HistoryFolder::write(name, "something else");
    EXPECT_TRUE(left().empty());
    EXPECT_TRUE(fs::exists(name));
    EXPECT_EQ(faults, std::vector<std::string>{name + ": is damaged; nothing in it can be used"});
}

/// The bytes of the first hex block of a document.
std::string hexBlockOf(const std::string &document)
{
    const std::string text = readBytes(document);
    const std::size_t start = text.find("```hex\n") + 7;
    std::istringstream digits(text.substr(start, text.find("```", start) - start));
    std::string bytes;
    for (std::string digit; digits >> digit;) {
        bytes += static_cast<char>(std::stoi(digit, nullptr, 16));
    }
    return bytes;
}

TEST_F(JournalTest, TheDocumentShowsARecord)
{
    EXPECT_EQ(hexBlockOf(std::string(std::getenv("VEL_SOURCE_DIR")) + "/docs/journal.md"),
              changeRecord({1'700'000'000, 1, setting("/A/x", "1", "2")}, 1));
}

TEST_F(JournalTest, AKilledWriterLeavesItsJournal)
{
    const pid_t child = fork();
    if (child == 0) {
        JournalWriter writer(folder(), head(), base, changes[0]);
        writer.append(changes[1]);
        _exit(0); // no destructor runs
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    const std::vector<LeftJournal> found = left();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].journal.head.process, static_cast<std::uint32_t>(child));
    EXPECT_EQ(recover(found[0].journal, base, "duct.vel").bytes, textAfter(2));
}

} // namespace
} // namespace veltext
