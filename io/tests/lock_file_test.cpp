// Tests locks: the levels in the lock file while readers and writers open and close
// a container, in turn and at the same time.
#include "io/Src/Main/lock_file.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>

namespace {

class LockFile : public ::testing::Test
{
protected:
    LockFile()
    {
        io_client maker(env_);
        EXPECT_EQ(maker.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(maker.write_integers("A", "B", 1, {1, 2, 3}), IO_OK);
        EXPECT_EQ(maker.request(IO_CLOSE_PRIMARY), IO_OK);
        take_messages();
    }

    std::string lock() { return env_.exists("f.lck") ? env_["f.lck"] : "none"; }

    io_memory_env env_;
};

TEST_F(LockFile, AWriterLocksUntilItCloses)
{
    io_client writer(env_);
    EXPECT_EQ(lock(), "none");
    ASSERT_EQ(writer.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    EXPECT_EQ(lock(), "        -1\n");
    io_client reader(env_);
    EXPECT_EQ(reader.request(IO_OPEN_PRIMARY, "f"), IO_LOCKED);
    EXPECT_EQ(
        take_messages(),
        "iif_set_lock: file f is currently locked for writing, and cannot be locked for read"
        " access.  Either another program is using this file, or the lock file f.lck is bad.\n"
        "iocnt: open the primary file failed\n");
    EXPECT_EQ(reader.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    EXPECT_EQ(take_messages(),
              "iif_set_lock: file f is already locked for write access.  Either another program is"
              " using this file, or the lock file f.lck is bad.\n"
              "iocnt: open the primary file failed\n");
    EXPECT_EQ(lock(), "        -1\n");
    ASSERT_EQ(writer.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "none");
}

TEST_F(LockFile, ReadersAreCountedAndKeepWritersOut)
{
    io_client first(env_);
    io_client second(env_);
    io_client writer(env_);
    ASSERT_EQ(first.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
    ASSERT_EQ(second.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(lock(), "         2\n");
    EXPECT_EQ(writer.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    EXPECT_EQ(
        take_messages(),
        "iif_set_lock: file f is currently locked for reading at level 2, and cannot be locked"
        " for write access.  Either another program is using this file, or the lock file f.lck"
        " is bad.\niocnt: open the primary file failed\n");
    EXPECT_EQ(lock(), "         2\n");
    ASSERT_EQ(first.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
    ASSERT_EQ(second.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "none");
    EXPECT_EQ(writer.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
}

TEST_F(LockFile, TheOnlyReaderMayBecomeTheWriter)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    open_file file(env_, report);
    ASSERT_EQ(iif_open(file, "f", "r"), IO_OK);
    EXPECT_EQ(iif_set_lock(file, IO_LOCK_READ), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
    EXPECT_EQ(iif_set_lock(file, IO_LOCK_WRITE), IO_OK);
    EXPECT_EQ(lock(), "        -1\n");
    EXPECT_EQ(file.lock_level, -1);
    EXPECT_EQ(iif_close(file), IO_OK);
    EXPECT_EQ(lock(), "none");
}

TEST_F(LockFile, OneOfSeveralReadersMayNotBecomeTheWriter)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    open_file file(env_, report);
    ASSERT_EQ(iif_open(file, "f", "r"), IO_OK);
    env_["f.lck"] = "         2\n";
    EXPECT_EQ(iif_set_lock(file, IO_LOCK_WRITE), IO_LOCKED);
    EXPECT_EQ(iif_close(file), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
}

TEST_F(LockFile, OddLockFiles)
{
    io_client client(env_);
    env_["f.lck"] = "         0\n";
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    EXPECT_NE(take_messages().find("locked for reading at level 0"), std::string::npos);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "         0\n");
    env_["f.lck"] = "1\n"; // shorter than our text: rewritten completely
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(lock(), "         2\n");
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    for (const char *text : {"", "x\n", "         1 2\n", "99999999999\n"}) {
        env_["f.lck"] = text;
        take_messages();
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_LOCKED) << text;
        EXPECT_EQ(take_messages(), "iif_set_lock: error reading lock file f.lck\n"
                                   "iocnt: open the primary file failed\n");
        EXPECT_EQ(lock(), text);
    }
}

/// Only the process that made such a lock file, or `ds unlock`, removes it.
TEST_F(LockFile, OfLevelZeroRefusesEveryWriterEvenAfterReading)
{
    env_["f.lck"] = "         0\n";
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client.write_integers("C", "D", 1, {1}), IO_LOCKED);
    EXPECT_NE(take_messages().find("setfilebusyflag: more than one user is reading f or the wrong"
                                   " lock file f.lck exists\n"),
              std::string::npos);
    EXPECT_EQ(client.remove("A", "B", 1), IO_LOCKED);
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "         0\n");
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    EXPECT_EQ(lock(), "         0\n");

    io_reporter report(env_);
    report.set_routine(collect_message);
    open_file file(env_, report);
    ASSERT_EQ(iif_open(file, "f", "r"), IO_OK);
    EXPECT_EQ(iif_set_lock(file, IO_LOCK_WRITE), IO_LOCKED);
    EXPECT_EQ(lock(), "         1\n");
    EXPECT_EQ(iif_close(file), IO_OK);
    EXPECT_EQ(lock(), "         0\n");
}

/// The lock stays, in whatever order readers open and close the file.
TEST_F(LockFile, OfLevelZeroStaysAfterSeveralReaders)
{
    for (bool first_leaves_first : {true, false}) {
        env_["f.lck"] = "         0\n";
        io_client first(env_);
        io_client second(env_);
        ASSERT_EQ(first.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        ASSERT_EQ(second.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        EXPECT_EQ(lock(), "         2\n");
        EXPECT_EQ((first_leaves_first ? first : second).request(IO_CLOSE_PRIMARY), IO_OK);
        EXPECT_EQ((first_leaves_first ? second : first).request(IO_CLOSE_PRIMARY), IO_OK);
        EXPECT_NE(lock(), "none");
        io_client writer(env_);
        EXPECT_EQ(writer.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    }
}

/// Both readers read the level before one of them writes its own.
TEST_F(LockFile, OfLevelZeroStaysAfterTwoReadersAtTheSameTime)
{
    env_["f.lck"] = "         0\n";
    io_client first(env_);
    io_client second(env_);
    ASSERT_EQ(first.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    env_["f.lck"] = "         0\n";
    ASSERT_EQ(second.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
    EXPECT_EQ(first.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(second.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "         0\n");
}

TEST_F(LockFile, UnlockingAnUnlockedFileIsOnlyTraced)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    env_.no_new_files = true; // a reader that cannot make the lock file continues
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    env_.trace.clear();
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    constexpr const char *line = "TRACE> iif_set_lock: not unlocking already-unlocked file\n";
    EXPECT_NE(env_.trace.find(line), std::string::npos) << env_.trace;
    EXPECT_EQ(take_messages(), "");

    // A lock of another process is not traced, and its level is not lowered.
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    env_["f.lck"] = "         1\n";
    env_.trace.clear();
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env_.trace.find(line), std::string::npos) << env_.trace;
    EXPECT_EQ(lock(), "         1\n");
}

TEST_F(LockFile, ALockFileJustMadeGetsItsLevel)
{
    io_client client(env_);
    env_["f.lck"] = "";
    env_.while_sleeping = [](io_memory_env &env) {
        if (env.slept_ms == 50) {
            env["f.lck"] = "         1\n";
        }
    };
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(lock(), "         2\n");
    EXPECT_EQ(env_.slept_ms, 50);
}

/// Acts as another process: it makes the lock file after we have looked for it
/// and before we make it, or removes it before we remove it.
class crowded_env : public io_memory_env
{
public:
    std::unique_ptr<io_file> open(const char *name, io_open how) override
    {
        if (how == io_open::create_new && !others.empty()) {
            files[name] = std::make_shared<std::string>(others);
            others.clear();
        }
        return io_memory_env::open(name, how);
    }

    bool remove(const char *name) override
    {
        if (removed_first) {
            files.erase(name);
        }
        return io_memory_env::remove(name);
    }

    std::string others; ///< the content of that lock file; empty: no lock file
    bool removed_first = false;
};

TEST(LockFileOfTwo, TheSecondProcessObeysTheLock)
{
    crowded_env env;
    env["f"] = "*INFO\n                   0\n*ENDINFO\n";
    io_client client(env);
    env.others = "         1\n";
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(env["f.lck"], "         2\n");
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(env["f.lck"], "         1\n");
    env.remove("f.lck");
    env.others = "        -1\n";
    take_messages();
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_LOCKED);
    EXPECT_NE(take_messages().find("file f is currently locked for writing"), std::string::npos);
    EXPECT_EQ(env["f.lck"], "        -1\n");
    env.remove("f.lck");
    env.others = "         1\n";
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    EXPECT_EQ(env["f.lck"], "         1\n");
}

TEST(LockFileOfTwo, TheLockFileIsGoneWhoeverRemovesIt)
{
    crowded_env env;
    env["f"] = "*INFO\n                   0\n*ENDINFO\n";
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    env.removed_first = true;
    take_messages();
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_FALSE(env.exists("f.lck"));
}

TEST_F(LockFile, AReaderThatMayNotMakeTheLockFileContinues)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    env_.no_new_files = true;
    io_client client(env_);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_NE(
        env_.trace.find("TRACE> warning: unable to lock file f for reading, continuing anyway\n"),
        std::string::npos);
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "none");
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_LOCKED);
    EXPECT_NE(take_messages().find("iif_set_lock: error opening lockfile f.lck for writing"),
              std::string::npos);
}

/// The file system allows the name, but not with ".lck" at its end.
TEST(LockFileName, ThatIsTooLongDoesNotStopAReader)
{
    std::string form = ::testing::TempDir() + "lock_XXXXXX";
    ASSERT_NE(mkdtemp(form.data()), nullptr);
    std::string short_name = form + "/f";
    std::string long_name = form + "/" + std::string(253, 'n');
    {
        io_client writer(io_real_env());
        ASSERT_EQ(writer.request(IO_OPEN_PRIMARY_WRITE, short_name.c_str()), IO_OK);
        ASSERT_EQ(writer.write_integers("A", "B", 1, {1, 2, 3}), IO_OK);
        ASSERT_EQ(writer.request(IO_CLOSE_PRIMARY), IO_OK);
    }
    std::filesystem::rename(short_name, long_name);
    take_messages();
    io_client reader(io_real_env());
    EXPECT_EQ(reader.request(IO_OPEN_PRIMARY, long_name.c_str()), IO_OK);
    EXPECT_EQ(reader.read("A", "B", 1), "1 2 3");
    EXPECT_EQ(reader.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(reader.request(IO_OPEN_PRIMARY_WRITE, long_name.c_str()), IO_LOCKED);
    EXPECT_NE(take_messages().find("for writing: File name too long\n"), std::string::npos);
    std::filesystem::remove_all(form);
}

TEST_F(LockFile, ALockFileThatWasRemovedIsNotAnError)
{
    env_.variables["ZOT_IO_TRACE"] = "1";
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    env_.remove("f.lck");
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_NE(env_.trace.find("iif_set_lock: not unlocking already-unlocked file\n"),
              std::string::npos);
}

TEST_F(LockFile, AFailedOpenLeavesNoLevel)
{
    io_client client(env_);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "absent"), IO_CANNOT_SEEK);
    EXPECT_FALSE(env_.exists("absent.lck"));
    EXPECT_FALSE(env_.exists("absent"));
    env_["f.lck"] = "         3\n";
    env_["f"] = "not a container";
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_BAD_FILE);
    EXPECT_EQ(lock(), "         3\n");
}

TEST_F(LockFile, WritingToAFileOpenedToReadWaitsAndReopens)
{
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client.write_integers("N", "B", 1, {7}), IO_OK);
    EXPECT_EQ(env_.slept_ms, 2000);
    EXPECT_EQ(lock(), "        -1\n");
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "none");
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client.read("N", "B", 1), "7");
}

TEST_F(LockFile, AFileThatStaysReadOnlyIsGivenUpAfterTenAttempts)
{
    env_.read_only.insert("f");
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client.write_integers("N", "B", 1, {7}), IO_PERMISSION);
    EXPECT_EQ(env_.slept_ms, 20000);
    EXPECT_EQ(take_messages(),
              "setfilebusyflag: Unable to open file f for write access after 10 attempts. Possible"
              " cause: Concurrent access by another program.\n"
              "iocnt: setfilebusyflag failed when req =IO_WRITE_PRIMARY_DS\n");
}

TEST_F(LockFile, AnotherReaderPreventsWriting)
{
    io_client client(env_);
    io_client other(env_);
    ASSERT_EQ(other.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    EXPECT_EQ(client.write_integers("N", "B", 1, {7}), IO_LOCKED);
    EXPECT_EQ(take_messages(), "setfilebusyflag: more than one user is reading f or the wrong lock"
                               " file f.lck exists\n"
                               "iocnt: setfilebusyflag failed when req =IO_WRITE_PRIMARY_DS\n");
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_EQ(lock(), "         1\n");
}

TEST_F(LockFile, AWriterThatEndsMeanwhileAllowsTheNext)
{
    io_client client(env_);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    // Another process writes between our close and our next attempt, during two
    // pauses.
    env_.while_sleeping = [](io_memory_env &env) {
        if (env.slept_ms == 2000) {
            env["f.lck"] = "        -1\n";
        } else if (env.slept_ms == 6000) {
            env.remove("f.lck");
        }
    };
    EXPECT_EQ(client.write_integers("N", "B", 1, {7}), IO_OK);
    EXPECT_EQ(env_.slept_ms, 6000);
}

} // namespace
