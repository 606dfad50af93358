// Makes backups in both ways in a new folder, and then checks names and contents.
// Also tests the cases in which no backup is made.
#include "veltext/backup.h"

#include "veltext/error.h"
#include "veltext/readFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace veltext {
namespace {

namespace fs = std::filesystem;

class BackupTest : public testing::TestWithParam<Backup>
{
protected:
    BackupTest()
    {
        std::string name = testing::TempDir() + "backup-XXXXXX";
        folder_ = ::mkdtemp(name.data());
    }
    ~BackupTest() override { fs::remove_all(folder_); }

    std::string write(const std::string &name, const std::string &bytes) const
    {
        std::ofstream(folder_ / name) << bytes;
        return (folder_ / name).string();
    }

    /// "NAME bytes," for each file, sorted.
    std::string listing() const
    {
        std::vector<std::string> lines;
        for (const auto &entry : fs::directory_iterator(folder_)) {
            lines.push_back(entry.path().filename().string() + ' ' +
                            (entry.is_directory() ? "folder" : readBytes(entry.path().string())));
        }
        std::sort(lines.begin(), lines.end());
        std::string text;
        for (const std::string &line : lines) {
            text += line + ',';
        }
        return text;
    }

    fs::path folder_;
};

INSTANTIATE_TEST_SUITE_P(Ways, BackupTest, testing::Values(Backup::Move, Backup::Both),
                         [](const auto &way) {
                             return way.param == Backup::Move ? "Move" : "Both";
                         });

TEST_P(BackupTest, ReplacesAnOlderBackup)
{
    const std::string file = write("a", "new");
    const std::string backup = write("a.bak", "older");
    EXPECT_EQ(backup, backupNameOf(file));
    EXPECT_TRUE(makeBackup(file, backup, GetParam()));
    EXPECT_EQ(listing(), GetParam() == Backup::Move ? "a.bak new," : "a new,a.bak new,");
}

TEST_P(BackupTest, NeverReplacesAFolder)
{
    const std::string file = write("a", "new");
    fs::create_directory(folder_ / "a.bak");
    if (GetParam() == Backup::Move) {
        EXPECT_FALSE(makeBackup(file, backupNameOf(file), GetParam()));
    } else {
        EXPECT_THROW(makeBackup(file, backupNameOf(file), GetParam()), Error);
    }
    EXPECT_EQ(listing(), "a new,a.bak folder,");
}

TEST_F(BackupTest, SucceedsForAFileThatHasMovedBefore)
{
    const std::string file = write("a", "new");
    EXPECT_TRUE(makeBackup(file, backupNameOf(file), Backup::Move));
    EXPECT_TRUE(makeBackup(file, backupNameOf(file), Backup::Move));
    EXPECT_EQ(listing(), "a.bak new,");
    fs::remove(folder_ / "a.bak");
    EXPECT_FALSE(makeBackup(file, backupNameOf(file), Backup::Move));
}

TEST_F(BackupTest, RemovesTheNameOfAFileThatIsAlsoTheBackup)
{
    const std::string file = write("a", "new");
    fs::create_hard_link(file, folder_ / "a.bak");
    EXPECT_TRUE(makeBackup(file, backupNameOf(file), Backup::Move));
    EXPECT_EQ(listing(), "a.bak new,");
}

TEST_F(BackupTest, KeepsALinkToTheBackup)
{
    write("a.bak", "data");
    const std::string file = (folder_ / "a").string();
    fs::create_symlink(folder_ / "a.bak", file);
    EXPECT_FALSE(makeBackup(file, backupNameOf(file), Backup::Move));
    EXPECT_EQ(listing(), "a data,a.bak data,");
}

TEST_F(BackupTest, KeepsDevices)
{
    EXPECT_FALSE(makeBackup("/dev/null", (folder_ / "null").string(), Backup::Move));
    EXPECT_EQ(listing(), "");
}

} // namespace
} // namespace veltext
