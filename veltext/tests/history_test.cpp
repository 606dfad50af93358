// What a history keeps, lists and reads, and what it does if it cannot keep
// anything. Damage is in historyDamage_test.cpp, a model in
// historyModel_test.cpp.
#include "veltext/history.h"

#include "veltext/historyChanges.h"
#include "veltext/stateFolder.h"
#include "veltext/tests/historyFolder.h"

#include <gtest/gtest.h>

#include <random>

#include <csignal>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace veltext {
namespace {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

class HistoryTest : public testing::Test
{
protected:
    test::HistoryFolder folder_;
};

mode_t modeOf(const std::string &path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

Texts namesIn(const std::string &folder)
{
    Texts names;
    for (const auto &entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string randomBytes(std::size_t size)
{
    std::mt19937_64 random(size);
    std::string bytes;
    while (bytes.size() < size) {
        const std::uint64_t word = random();
        bytes.append(reinterpret_cast<const char *>(&word), sizeof word);
    }
    return bytes;
}

TEST_F(HistoryTest, HasNoVersionsAtFirst)
{
    EXPECT_TRUE(folder_.history().list().versions.empty());
    EXPECT_TRUE(folder_.history().list().faults.empty());
    EXPECT_EQ(folder_.history().keep("test"), ""); // the file does not exist
    EXPECT_FALSE(fs::exists(folder_.state()));
}

TEST_F(HistoryTest, ListsTheNewestFirst)
{
    EXPECT_EQ(folder_.keep("first\n", "veltool"), "");
    folder_.now += 60;
    EXPECT_EQ(folder_.keep("the second\n", "veleditor"), "");
    const std::vector<Version> versions = folder_.history().list().versions;
    ASSERT_EQ(versions.size(), 2U);
    EXPECT_EQ(versions[0].time, 1'700'000'060);
    EXPECT_EQ(versions[0].size, 11U);
    EXPECT_EQ(versions[0].program, "veleditor");
    EXPECT_EQ(versions[1].time, 1'700'000'000);
    EXPECT_EQ(versions[1].size, 6U);
    EXPECT_EQ(versions[1].program, "veltool");
    EXPECT_EQ(folder_.contents(), (Texts{"the second\n", "first\n"}));
}

TEST_F(HistoryTest, KeepsAnyBytes)
{
    std::string all;
    for (int c = 0; c < 256; ++c) {
        all += static_cast<char>(c);
    }
    EXPECT_EQ(folder_.keep(all, "a b%\n\x7f"), "");
    EXPECT_EQ(folder_.keep(""), "");
    EXPECT_EQ(folder_.contents(), (Texts{"", all}));
    EXPECT_EQ(folder_.history().list().versions[1].program, "a b%\n\x7f");
}

TEST_F(HistoryTest, StoresEqualContentsOnce)
{
    for (const char *text : {"a", "b", "a", "b", "a"}) {
        EXPECT_EQ(folder_.keep(text, text), "");
    }
    EXPECT_EQ(folder_.contents(), (Texts{"a", "b", "a", "b", "a"}));
    EXPECT_EQ(namesIn(folder_.history().folder()), (Texts{"1.gz", "2.gz", "index", "lock"}));
}

TEST_F(HistoryTest, AVersionReplacesAnEqualPreviousOne)
{
    EXPECT_EQ(folder_.keep("a"), "");
    folder_.now += 10;
    EXPECT_EQ(folder_.keep("a", "other program"), "");
    const std::vector<Version> versions = folder_.history().list().versions;
    ASSERT_EQ(versions.size(), 1U);
    EXPECT_EQ(versions[0].time, 1'700'000'010);
    EXPECT_EQ(versions[0].program, "other program");
}

TEST_F(HistoryTest, IsOnlyForItsUser)
{
    fs::create_directories(folder_.state());
    ::chmod(folder_.state().c_str(), 0755);
    EXPECT_EQ(folder_.keep("a"), "");
    EXPECT_EQ(modeOf(folder_.state()), 0700U);
    EXPECT_EQ(modeOf(folder_.history().folder()), 0700U);
    for (const std::string &name : namesIn(folder_.history().folder())) {
        EXPECT_EQ(modeOf(folder_.stored(name)), 0600U) << name;
    }
}

TEST_F(HistoryTest, LinksLeadToTheHistoryOfTheirFile)
{
    EXPECT_EQ(folder_.keep("a"), "");
    const std::string link = folder_.path() / "link.vel";
    fs::create_symlink(folder_.file(), link);
    fs::create_directory(folder_.path() / "sub");
    const std::string roundabout = folder_.path() / "sub" / ".." / "duct.vel";
    for (const std::string &name : {link, roundabout}) {
        EXPECT_EQ(History(name, folder_.state(), {}).folder(), folder_.history().folder());
    }
}

TEST_F(HistoryTest, FilesOfTheSameNameHaveSeparateHistories)
{
    EXPECT_NE(stateNameOf("/a/duct.vel"), stateNameOf("/b/duct.vel"));
    EXPECT_EQ(stateNameOf("/a/duct.vel"), "duct.vel-348e191304ac6ebb");
    EXPECT_LE(stateNameOf('/' + std::string(255, 'x')).size(), 255U);
}

TEST_F(HistoryTest, ADeletedFileKeepsItsHistory)
{
    EXPECT_EQ(folder_.keep("a"), "");
    fs::remove(folder_.file());
    EXPECT_EQ(folder_.contents(), Texts{"a"});
}

TEST_F(HistoryTest, OnlyRegularFilesHaveVersions)
{
    ASSERT_EQ(::mkfifo(folder_.file().c_str(), 0600), 0);
    EXPECT_EQ(folder_.history().keep("test"), "");
    EXPECT_TRUE(folder_.contents().empty());
}

TEST_F(HistoryTest, KeepsHundredVersionsOfADay)
{
    Texts expected;
    for (int i = 0; i < 130; ++i) {
        EXPECT_EQ(folder_.keep(std::to_string(i)), "");
        ++folder_.now;
        expected.insert(expected.begin(), std::to_string(i));
    }
    expected.resize(100);
    EXPECT_EQ(folder_.contents(), expected);
    EXPECT_EQ(namesIn(folder_.history().folder()).size(), 102U);
}

TEST_F(HistoryTest, KeepsOneVersionOfEachEarlierDay)
{
    folder_.now = 20'000 * secondsOfADay; // midnight
    for (const char *text : {"a", "b", "c", "d", "e", "f"}) {
        EXPECT_EQ(folder_.keep(text), "");
        folder_.now += 12 * 60 * 60;
    }
    // f, e and d are from the last day: d is exactly one day old. Of the rest, c
    // and b are the last of their days.
    EXPECT_EQ(folder_.contents(), (Texts{"f", "e", "d", "c", "b"}));
    folder_.now += 10 * secondsOfADay;
    EXPECT_EQ(folder_.keep("g"), "");
    EXPECT_EQ(folder_.contents(), (Texts{"g", "f", "d", "b"}));
}

TEST_F(HistoryTest, AClockThatGoesBackLosesNoVersion)
{
    for (const char *text : {"a", "b", "c", "d"}) {
        EXPECT_EQ(folder_.keep(text), "");
        folder_.now -= 40 * secondsOfADay;
    }
    EXPECT_EQ(folder_.contents(), (Texts{"d", "c", "b", "a"}));
}

TEST_F(HistoryTest, AVersionOverTheLimitIsNotKept)
{
    EXPECT_EQ(folder_.keep("a"), "");
    const std::string message = folder_.keep(randomBytes(mostHistoryBytes));
    EXPECT_EQ(message, folder_.file() + ": the history does not have the previous version: " +
                           folder_.file() + ": takes more than 50000000 bytes compressed");
    EXPECT_EQ(folder_.contents(), Texts{"a"});
    EXPECT_EQ(namesIn(folder_.history().folder()), (Texts{"1.gz", "index", "lock"}));
}

TEST_F(HistoryTest, AMissingPlaceGivesAMessage)
{
    folder_.write("a");
    EXPECT_EQ(History(folder_.file(), "", [] { return 0; }).keep("test"),
              folder_.file() + ": the history does not have the previous version: "
                               "neither XDG_STATE_HOME nor HOME names a folder");
    EXPECT_TRUE(History(folder_.file(), "", {}).list().versions.empty());
}

TEST_F(HistoryTest, APlaceThatIsAFileGivesAMessage)
{
    test::HistoryFolder::write(folder_.path() / "state", "");
    EXPECT_EQ(folder_.keep("a"), folder_.file() +
                                     ": the history does not have the previous version: " +
                                     folder_.state() + ": Not a directory");
    EXPECT_TRUE(folder_.contents().empty());
}

TEST_F(HistoryTest, APlaceThatCannotBeMadeGivesAMessage)
{
    folder_.write("a");
    const std::string message =
        History(folder_.file(), "/proc/none", [] { return 0; }).keep("test");
    EXPECT_EQ(message, folder_.file() + ": the history does not have the previous version: "
                                        "/proc/none: No such file or directory");
}

/// Whether `work` returns true in a new process that may write at most `bytes` to
/// a file.
template <typename Work>
bool worksWithin(rlim_t bytes, Work work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {bytes, bytes};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(work() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(HistoryTest, AFullDiskGivesAMessageInEveryStep)
{
    EXPECT_EQ(folder_.keep("a"), "");
    folder_.write(randomBytes(1000));
    const History history = folder_.history();
    // The limits allow nothing, or a part, or the object but not the index.
    for (const rlim_t bytes : {0, 100, 900}) {
        EXPECT_TRUE(worksWithin(bytes, [&] { return !history.keep("test").empty(); })) << bytes;
        EXPECT_EQ(folder_.contents(), Texts{"a"}) << bytes;
    }
    EXPECT_EQ(history.keep("test"), "");
    EXPECT_EQ(folder_.contents(), (Texts{randomBytes(1000), "a"}));
    EXPECT_EQ(namesIn(history.folder()).size(), 4U);
}

TEST_F(HistoryTest, TwoWritersAtOnceLoseNoVersion)
{
    constexpr int rounds = 20;
    const auto write = [&](char name) {
        const std::string other = folder_.path() / std::string(1, name);
        const std::string file = folder_.file();
        for (int i = 0; i < rounds; ++i) {
            test::HistoryFolder::write(other, name + std::to_string(i));
            fs::rename(other, file);
            if (!folder_.history().keep(std::string(1, name)).empty()) {
                return false;
            }
        }
        return true;
    };
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(write('a') ? 0 : 1);
    }
    EXPECT_TRUE(write('b'));
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    // Each writer has kept something at each of its turns, and all of it can be
    // read.
    EXPECT_TRUE(folder_.history().list().faults.empty());
    const Texts contents = folder_.contents();
    EXPECT_GT(contents.size(), static_cast<std::size_t>(rounds));
    EXPECT_EQ(std::count(contents.begin(), contents.end(), "damaged"), 0);
}

TEST_F(HistoryTest, IsReadEvenIfItCannotBeLocked)
{
    EXPECT_EQ(folder_.keep("a"), "");
    fs::remove(folder_.stored("lock"));
    fs::create_directory(folder_.stored("lock"));
    EXPECT_EQ(folder_.contents(), Texts{"a"});
    EXPECT_EQ(folder_.keep("b"), folder_.file() +
                                     ": the history does not have the previous version: " +
                                     folder_.stored("lock") + ": Is a directory");
}

TEST_F(HistoryTest, CountsChangesByPath)
{
    folder_.keep("A:\n  x = 1\nEND\n");
    folder_.keep("A:\n  x = 2\n  y = 1\nEND\n");
    folder_.keep("not a statement\n");
    folder_.keep("A:\n  x = 2\nEND\n");
    const std::string current = "# a comment\nA:\n  x = 2\nEND\n";
    const History history = folder_.history();
    using Counts = std::vector<std::optional<std::size_t>>;
    const std::vector<Version> versions = history.list().versions;
    EXPECT_EQ(countChanges(history, versions, &current), (Counts{0, {}, {}, 2}));
    EXPECT_EQ(countChanges(history, versions, nullptr), (Counts{{}, {}, {}, 2}));
}

} // namespace
} // namespace veltext
