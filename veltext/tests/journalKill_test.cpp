// Journals whose writer is killed, or fails, at each write and each flush in turn.
//
// The calls of the system are wrapped: the one that a test chooses writes a part of its
// bytes, and then ends the process or fails like on a full disk.
#include "veltext/error.h"
#include "veltext/journalFile.h"
#include "veltext/recovery.h"
#include "veltext/tests/historyFolder.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/wait.h>
#include <unistd.h>

namespace {

enum class Fate { Works, Killed, Fails };

Fate fate = Fate::Works;
int callsLeft = 0;      ///< until the call that does not work
double partWritten = 0; ///< of its bytes
int complete = 0;       ///< changes that the writer has finished

bool isTheCall()
{
    return fate != Fate::Works && --callsLeft == 0;
}

} // namespace

extern "C" {
ssize_t __real_write(int descriptor, const void *bytes, size_t size);
int __real_fdatasync(int descriptor);

ssize_t __wrap_write(int descriptor, const void *bytes, size_t size)
{
    if (!isTheCall()) {
        return __real_write(descriptor, bytes, size);
    }
    const auto part = static_cast<size_t>(static_cast<double>(size) * partWritten);
    if (part > 0) {
        (void)!__real_write(descriptor, bytes, part);
    }
    if (fate == Fate::Killed) {
        _exit(complete);
    }
    errno = ENOSPC;
    return -1;
}

int __wrap_fdatasync(int descriptor)
{
    if (!isTheCall()) {
        return __real_fdatasync(descriptor);
    }
    if (fate == Fate::Killed) {
        _exit(complete);
    }
    errno = EIO;
    return -1;
}
}

namespace veltext {
namespace {

const std::string base = "A:\n  x = 0\nEND\n";
constexpr int changeCount = 4;

std::string textAfter(int count)
{
    return "A:\n  x = " + std::to_string(count) + "\nEND\n";
}

JournalChange change(int number)
{
    return {number, static_cast<std::uint32_t>(number),
            Edit{Edit::Kind::SetValue, "/A/x", std::to_string(number - 1), std::to_string(number),
                 Edit::atEnd}};
}

class JournalKillTest : public testing::Test
{
protected:
    [[nodiscard]] std::string folder() const { return folder_.path() / "journal"; }

    /// Writes all changes as the editor does: after a failure, the text of all data.
    /// Gives how many could not be kept.
    int writeAll() const
    {
        std::optional<JournalWriter> writer;
        int failures = 0;
        bool mustRepeat = false;
        for (int number = 1; number <= changeCount; ++number) {
            JournalChange next = change(number);
            if (mustRepeat) {
                next.what = WholeText{textAfter(number)};
            }
            try {
                if (writer) {
                    writer->append(next);
                    writer->flush();
                } else {
                    writer.emplace(folder(), newHead(folder_.file(), base, false), base, next);
                }
                mustRepeat = false;
            } catch (const Error &) {
                mustRepeat = true;
                ++failures;
            }
            complete = number;
        }
        return failures;
    }

    /// The number of changes that can be recovered.
    [[nodiscard]] int recovered() const
    {
        std::vector<std::string> faults;
        const std::vector<LeftJournal> left = leftJournals(folder(), folder_.file(), &faults);
        EXPECT_TRUE(faults.empty());
        EXPECT_LE(left.size(), 1U);
        const std::string bytes =
            left.empty() ? base : recover(left[0].journal, base, "a.vel").bytes;
        for (int count = 0; count <= changeCount; ++count) {
            if (bytes == textAfter(count)) {
                return count;
            }
        }
        ADD_FAILURE() << bytes;
        return -1;
    }

    void clear() const { std::filesystem::remove_all(folder()); }

    test::HistoryFolder folder_;
};

TEST_F(JournalKillTest, AKillAtAnyWriteLosesAtMostTheChangeInProgress)
{
    int calls = 0;
    for (bool isKilled = true; isKilled;) {
        ++calls;
        for (const double part : {0.0, 0.3, 0.99, 1.0}) {
            clear();
            const pid_t child = fork();
            if (child == 0) {
                fate = Fate::Killed;
                callsLeft = calls;
                partWritten = part;
                (void)writeAll();
                _exit(100);
            }
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            isKilled = WEXITSTATUS(status) != 100;
            const int done = isKilled ? WEXITSTATUS(status) : changeCount;
            const int found = recovered();
            EXPECT_TRUE(found == done || found == done + 1)
                << calls << ' ' << part << ": " << found;
        }
    }
    // Head, base, first change, and a flush; then a write and a flush for each change.
    EXPECT_EQ(calls, 4 + 2 * (changeCount - 1) + 1);
}

TEST_F(JournalKillTest, AFailureOfAnyWriteLosesNothingInTheEnd)
{
    for (int calls = 1; calls < 4 + 2 * (changeCount - 1); ++calls) {
        for (const double part : {0.0, 0.3, 0.99}) {
            clear();
            fate = Fate::Fails;
            callsLeft = calls;
            partWritten = part;
            EXPECT_EQ(writeAll(), 1) << calls;
            fate = Fate::Works;
            const bool isLast = calls >= 4 + 2 * (changeCount - 1) - 1;
            EXPECT_GE(recovered(), isLast ? changeCount - 1 : changeCount) << calls << ' ' << part;
        }
    }
}

} // namespace
} // namespace veltext
