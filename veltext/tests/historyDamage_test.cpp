// Histories with damaged files: intact data is used, and the rest is reported.
#include "veltext/history.h"

#include "veltext/historyIndex_p.h"
#include "veltext/tests/historyFolder.h"

#include <gtest/gtest.h>

#include <set>

namespace veltext {
namespace {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

/// A history with four versions and three contents: b is in two of them.
class HistoryDamageTest : public testing::Test
{
protected:
    HistoryDamageTest()
    {
        for (const char *text : {"a = 1\n", "b = 2\n", "c = 3\n", "b = 2\n"}) {
            EXPECT_EQ(folder_.keep(text), "");
            folder_.now += 60;
        }
        index_ = readBytes(folder_.stored("index"));
    }

    void writeStored(const std::string &name, const std::string &bytes) const
    {
        test::HistoryFolder::write(folder_.stored(name), bytes);
    }

    [[nodiscard]] std::set<std::string> contentSet() const
    {
        const Texts contents = folder_.contents();
        return {contents.begin(), contents.end()};
    }

    [[nodiscard]] Texts faults() const { return folder_.history().list().faults; }

    const Texts all_ = {"b = 2\n", "c = 3\n", "b = 2\n", "a = 1\n"};
    const std::set<std::string> allSet_ = {all_.begin(), all_.end()};
    test::HistoryFolder folder_;
    std::string index_;
};

TEST_F(HistoryDamageTest, AnIndexOfAnyLengthLosesNoContent)
{
    for (std::size_t length = 0; length < index_.size() - 1; ++length) {
        writeStored("index", index_.substr(0, length));
        EXPECT_EQ(contentSet(), allSet_) << length;
        EXPECT_EQ(faults(), Texts{folder_.stored("index") +
                                  ": is damaged; the versions in it are taken from the files "
                                  "beside it"})
            << length;
    }
    writeStored("index", index_.substr(0, index_.size() - 1)); // without the last line end
    EXPECT_EQ(folder_.contents(), all_);
    EXPECT_TRUE(faults().empty());
}

TEST_F(HistoryDamageTest, AFlippedByteOfTheIndexLosesNoContent)
{
    for (std::size_t place = 0; place < index_.size(); ++place) {
        for (const int bits : {0x01, 0x2a, 0xff}) {
            std::string damaged = index_;
            damaged[place] = static_cast<char>(damaged[place] ^ bits);
            writeStored("index", damaged);
            EXPECT_EQ(contentSet(), allSet_) << place << ' ' << bits;
            EXPECT_EQ(faults().size(), 1U) << place << ' ' << bits;
        }
    }
}

TEST_F(HistoryDamageTest, AMissingIndexIsMadeFromTheObjects)
{
    fs::remove(folder_.stored("index"));
    EXPECT_EQ(folder_.contents(), (Texts{"c = 3\n", "b = 2\n", "a = 1\n"}));
    const VersionList list = folder_.history().list();
    EXPECT_EQ(list.versions[0].time, 1'700'000'120);
    EXPECT_EQ(list.versions[0].program, "test");
    EXPECT_EQ(list.faults, Texts{folder_.stored("index") +
                                 ": is missing; the versions in it are taken from the files "
                                 "beside it"});
}

TEST_F(HistoryDamageTest, LostVersionsAreRestoredInTheirOrder)
{
    folder_.keep("d = 4\n");
    const std::string index = readBytes(folder_.stored("index"));
    // The lines of c, and of b for the second time.
    std::string damaged = index;
    for (const char *time : {"1700000120", "1700000180"}) {
        damaged[damaged.find(time)] = '2';
    }
    writeStored("index", damaged);
    EXPECT_EQ(folder_.contents(), (Texts{"d = 4\n", "c = 3\n", "b = 2\n", "a = 1\n"}));
}

TEST_F(HistoryDamageTest, TheNextVersionRepairsIt)
{
    writeStored("index", index_.substr(0, index_.size() / 2));
    EXPECT_EQ(folder_.keep("d = 4\n"),
              folder_.stored("index") +
                  ": is damaged; the versions in it are taken from the files beside it");
    EXPECT_EQ(folder_.contents(), (Texts{"d = 4\n", "c = 3\n", "b = 2\n", "a = 1\n"}));
    EXPECT_TRUE(faults().empty());
    EXPECT_EQ(folder_.keep("e = 5\n"), "");
}

TEST_F(HistoryDamageTest, ATruncatedObjectLosesOnlyItsVersions)
{
    const std::string object = readBytes(folder_.stored("2.gz"));
    for (std::size_t length = 0; length < object.size(); ++length) {
        writeStored("2.gz", object.substr(0, length));
        EXPECT_EQ(folder_.contents(), (Texts{"c = 3\n", "a = 1\n"})) << length;
        EXPECT_EQ(faults(),
                  Texts{folder_.stored("2.gz") + ": is damaged; the version in it is lost"});
    }
    fs::remove(folder_.stored("2.gz"));
    EXPECT_EQ(folder_.contents(), (Texts{"c = 3\n", "a = 1\n"}));
    EXPECT_EQ(faults(), Texts{folder_.stored("2.gz") + ": is missing; the version in it is lost"});
}

TEST_F(HistoryDamageTest, AFlippedByteOfAnObjectNeverGivesAWrongContent)
{
    const std::string object = readBytes(folder_.stored("2.gz"));
    for (std::size_t place = 0; place < object.size(); ++place) {
        for (const int bits : {0x01, 0x10, 0xff}) {
            std::string damaged = object;
            damaged[place] = static_cast<char>(damaged[place] ^ bits);
            writeStored("2.gz", damaged);
            for (const std::string &content : folder_.contents()) {
                EXPECT_TRUE(allSet_.contains(content) || content == "damaged") << place;
            }
        }
    }
}

TEST_F(HistoryDamageTest, WithBothDamagedTheRestIsFound)
{
    const std::string object = readBytes(folder_.stored("2.gz"));
    fs::remove(folder_.stored("index"));
    for (std::size_t length = 0; length < object.size(); ++length) {
        writeStored("2.gz", object.substr(0, length));
        EXPECT_EQ(folder_.contents(), (Texts{"c = 3\n", "a = 1\n"})) << length;
        EXPECT_EQ(faults().size(), 2U) << length;
    }
}

TEST_F(HistoryDamageTest, AContentWhoseObjectIsDamagedIsStoredAgain)
{
    std::string object = readBytes(folder_.stored("2.gz"));
    object[object.size() - 12] ^= 0x40;
    writeStored("2.gz", object);
    EXPECT_EQ(folder_.keep("b = 2\n"), "");
    EXPECT_EQ(folder_.contents(), (Texts{"b = 2\n", "damaged", "c = 3\n", "damaged", "a = 1\n"}));
}

TEST_F(HistoryDamageTest, FilesOfAKilledProgramAreRemoved)
{
    writeStored(".veltool-abcdef", "part of an object");
    writeStored("4.gz", readBytes(folder_.stored("1.gz")));
    EXPECT_EQ(folder_.contents(), all_);
    EXPECT_EQ(folder_.keep("d = 4\n"), "");
    EXPECT_FALSE(fs::exists(folder_.stored(".veltool-abcdef")));
    EXPECT_FALSE(fs::exists(folder_.stored("4.gz")));
    EXPECT_EQ(folder_.contents().front(), "d = 4\n");
}

TEST_F(HistoryDamageTest, ALaterFormatIsNotChanged)
{
    const std::string later = "veleditor-history 2 f66ac0d8\n";
    writeStored("index", later);
    EXPECT_THROW(static_cast<void>(folder_.history().list()), Error);
    EXPECT_NE(folder_.keep("d = 4\n").find("later version"), std::string::npos);
    EXPECT_EQ(readBytes(folder_.stored("index")), later);
    EXPECT_TRUE(fs::exists(folder_.stored("1.gz")));
}

TEST(HistoryIndexTest, AgreesWithItsDocument)
{
    const std::string shown =
        indexText("/home/ada/duct.vel", {{1'700'000'000, 6, 31, 1, 0xaf2fda68, "veltool"},
                                         {1'700'000'060, 6, 31, 2, 0x0296fb05, "veleditor"},
                                         {1'700'000'120, 6, 31, 1, 0xaf2fda68, "veltool"}});
    const std::string document =
        readBytes(std::string(std::getenv("VEL_SOURCE_DIR")) + "/docs/history.md");
    std::string indented;
    for (const char c : "    " + shown.substr(0, shown.size() - 1)) {
        indented += c == '\n' ? std::string("\n    ") : std::string(1, c);
    }
    EXPECT_NE(document.find(indented + '\n'), std::string::npos) << indented;
    EXPECT_TRUE(parseIndex(shown, "index").isWhole);
}

} // namespace
} // namespace veltext
