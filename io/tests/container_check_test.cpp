// Tests listing, verifying and rebuilding, with correct files and with files that
// have known faults.
#include "io/Src/Main/container_check.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class ContainerCheck : public ::testing::Test
{
protected:
    ContainerCheck() : report_(env_)
    {
        report_.set_routine(collect_message);
        io_client client(env_);
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(client.write_integers("A", "P", 1, {1, 2}, "u"), IO_OK);
        EXPECT_EQ(client.write_integers("B", "P", 2, std::vector<std::int32_t>(200, 4)), IO_OK);
        EXPECT_EQ(client.write_strings("C", "P", 3, {"x"}, "F"), IO_OK);
        EXPECT_EQ(client.remove("A", "P", 1), IO_OK);
        second_ = client.position("B", "P", 2);
        third_ = client.position("C", "P", 3);
        EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
        take_messages();
    }

    /// One line "position text" for each fault.
    std::string faults()
    {
        std::string before = env_["f"];
        std::vector<container_fault> found;
        int code = verify_container(env_, report_, "f", found);
        EXPECT_EQ(env_["f"], before);
        EXPECT_FALSE(env_.exists("f.lck"));
        if (code != IO_OK) {
            return "code " + std::to_string(code);
        }
        std::string text;
        for (const container_fault &fault : found) {
            text += std::to_string(fault.position) + " " + fault.text + "\n";
        }
        return text;
    }

    std::string listed(bool all)
    {
        open_file file(env_, report_);
        EXPECT_EQ(iif_open(file, "f", "r"), IO_OK);
        std::vector<container_entry> entries;
        EXPECT_EQ(list_container(file, all, entries), IO_OK);
        EXPECT_EQ(iif_close(file), IO_OK);
        std::string text;
        for (const container_entry &entry : entries) {
            text += std::string(1, entry.status) + " " + entry.header.what + " " +
                    entry.format.letter + entry.format.second + " " + entry.header.type + " " +
                    std::to_string(entry.header.count) + " " + std::to_string(entry.position) +
                    "\n";
        }
        return text;
    }

    std::string at(std::int64_t position, const std::string &text) const
    {
        return std::to_string(position) + " " + text + "\n";
    }

    io_memory_env env_;
    io_reporter report_;
    std::int64_t second_ = 0;
    std::int64_t third_ = 0;
};

TEST_F(ContainerCheck, Lists)
{
    std::string live = "Y B u5 INTR 200 " + std::to_string(second_) + "\nY C F  STRI 1 " +
                       std::to_string(third_) + "\n";
    EXPECT_EQ(listed(false), live);
    EXPECT_EQ(listed(true), "N A u  INTR 2 36\n" + live);
}

TEST_F(ContainerCheck, AFileWithoutFaults)
{
    EXPECT_EQ(faults(), "");
    env_["f"] = "";
    EXPECT_EQ(faults(), "");
    env_["f"] = "something else";
    EXPECT_EQ(faults(), "code 20");
}

TEST_F(ContainerCheck, FaultsHaveTheirPlaces)
{
    std::string sound = env_["f"];
    env_["f"][25] = '7';
    EXPECT_NE(faults().find("6 the recorded file size is "), std::string::npos);
    env_["f"] = sound;
    std::size_t stream = sound.find("*DATA", static_cast<std::size_t>(second_) + 20) + 15;
    env_["f"][stream] = static_cast<char>(env_["f"][stream] ^ 0x40);
    EXPECT_EQ(faults(), at(second_, "B:P:2: io_gunzip: Data error"));
    env_["f"] = sound;
    std::size_t number = sound.find("NUMBER\x1b"
                                    "1",
                                    static_cast<std::size_t>(third_));
    env_["f"][number + 7] = '0';
    EXPECT_EQ(faults(), at(third_, "C:P:3: zotreadString: read too many characters: x"));
    env_["f"] = sound;
    std::size_t line = sound.rfind("N\x1b"
                                   "A");
    env_["f"][line] = 'Y';
    EXPECT_EQ(faults(), at(36, "A:P:1: is deleted, but the index lists it as live"));
    env_["f"] = sound;
    std::size_t name = sound.rfind("Y\x1b"
                                   "C");
    env_["f"][name + 2] = 'D';
    EXPECT_EQ(faults(), at(third_, "D:P:3: the index has another name or length than the dataset"));
}

TEST_F(ContainerCheck, FaultsAfterTheFirst)
{
    std::string sound = env_["f"];
    // Damages the length of the first dataset, the data of the second, and a line of
    // the index.
    env_["f"][39] = static_cast<char>(env_["f"][39] ^ 0x01);
    std::size_t stream = sound.find("*DATA", static_cast<std::size_t>(second_) + 20) + 15;
    env_["f"][stream] = static_cast<char>(env_["f"][stream] ^ 0x40);
    std::size_t line = sound.rfind("Y\x1b"
                                   "C");
    env_["f"][line] = 'N';
    std::string text = faults();
    EXPECT_EQ(text.find("36 recreate_indextable: Bad file: final dataset length field "), 0U)
        << text;
    EXPECT_NE(text.find(at(second_, "B:P:2: io_gunzip: Data error")), std::string::npos) << text;
    EXPECT_NE(text.find(at(third_, "C:P:3: is live, but the index marks it as deleted")),
              std::string::npos)
        << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3) << text;
}

TEST_F(ContainerCheck, RebuildingAFileThatWasCut)
{
    std::string sound = env_["f"];
    env_["f"].resize(static_cast<std::size_t>(third_) + 50);
    rebuild_result result;
    ASSERT_EQ(rebuild_container(env_, report_, "f", result), IO_OK);
    EXPECT_EQ(result.datasets, 1);
    EXPECT_EQ(result.dropped_bytes, 50);
    ASSERT_EQ(result.messages.size(), 1U);
    EXPECT_EQ(result.messages[0].find("recreate_indextable: fseek of "), 0U);
    EXPECT_EQ(faults(), "");
    EXPECT_EQ(listed(false).substr(0, 3), "Y B");
}

TEST_F(ContainerCheck, RebuildingReportsDatasetsThatOnlyTheIndexHas)
{
    // The length of the last dataset points beyond the file, but its index line
    // exists.
    std::string &bytes = env_["f"];
    bytes.replace(static_cast<std::size_t>(third_) + 3, 20, "             9999999");
    rebuild_result result;
    ASSERT_EQ(rebuild_container(env_, report_, "f", result), IO_OK);
    EXPECT_EQ(result.datasets, 1);
    ASSERT_EQ(result.lost.size(), 1U);
    EXPECT_STREQ(result.lost[0].what, "C");
    EXPECT_GT(result.dropped_bytes, 100);
    EXPECT_EQ(faults(), "");
}

TEST_F(ContainerCheck, ADamagedFileIsNotChanged)
{
    env_["f"][static_cast<std::size_t>(second_)] = 'Q';
    std::string before = env_["f"];
    rebuild_result result;
    take_messages();
    EXPECT_EQ(rebuild_container(env_, report_, "f", result), IO_BAD_FILE);
    EXPECT_NE(take_messages().find("Bad file: expected dataset"), std::string::npos);
    EXPECT_EQ(env_["f"], before);
    EXPECT_FALSE(env_.exists("f.lck"));
    EXPECT_EQ(rebuild_container(env_, report_, "none", result), IO_CANNOT_SEEK);
    EXPECT_FALSE(env_.exists("none"));
}

} // namespace
