// Cuts files at every length and flips every byte, in every format. Tests that each
// call returns a known code and that a read-only opening does not change the file.
#include "io/Src/Main/container_check.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

class Damage : public ::testing::TestWithParam<const char *>
{
protected:
    Damage()
    {
        io_client client(env_);
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        EXPECT_EQ(client.write_integers("I", "P", 1, std::vector<std::int32_t>(120, 5), GetParam()),
                  IO_OK);
        EXPECT_EQ(client.write_strings("S", "P", 2, {"one", "two"}, GetParam()), IO_OK);
        write_records(client);
        EXPECT_EQ(client.remove("S", "P", 2), IO_OK);
        EXPECT_EQ(client.write_doubles("D", "P", 3, {1, 2, 3}, GetParam()), IO_OK);
        crashed_ = env_["f"];
        EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
        whole_ = env_["f"];
    }

    void write_records(io_client &client)
    {
        io_header_storage header = named_header("R", "P", "STRC{INTR:1 STRI:1:4 LOGL:1 CHAR:2}");
        io_set_text(header.format, GetParam());
        io_set_text(header.attributes[0], "an attribute");
        header.attribute_count = 1;
        header.count = 2;
        header.when = 4;
        std::int32_t integers[] = {1, 2};
        char strings[10] = "ab";
        std::uint8_t logicals[] = {0, 1};
        char chars[] = {'w', 'x', 'y', 'z'};
        IO_data data;
        data.integers = integers;
        data.integers_size = 2;
        data.strings = strings;
        data.strings_size = 2;
        data.string_slot = 5;
        data.logicals = logicals;
        data.logicals_size = 2;
        data.chars = chars;
        data.chars_size = 4;
        EXPECT_EQ(client.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);
    }

    static void expect_code(int code, const std::string &what)
    {
        EXPECT_TRUE(code >= 0 && code < IO_CODE_COUNT) << what << ": " << code;
    }

    /// Opens, locates, reads everything and verifies. Returns the number of datasets
    /// read.
    int exercise(const std::string &bytes, const std::string &what)
    {
        env_["g"] = bytes;
        int read = 0;
        io_client client(env_);
        int opened = client.request(IO_OPEN_PRIMARY, "g");
        expect_code(opened, what);
        if (opened == IO_OK) {
            client.locate("*", "*", -1);
            for (const char *name : {"I", "R", "D"}) {
                read += client.read(name, "P", -1).compare(0, 5, "code ") != 0 ? 1 : 0;
            }
            client.locate("*", "P", 3);
            expect_code(client.request(IO_CLOSE_PRIMARY), what);
        }
        io_reporter report(env_);
        report.set_routine(collect_message);
        std::vector<container_fault> faults;
        expect_code(verify_container(env_, report, "g", faults), what);
        EXPECT_EQ(env_["g"], bytes) << what;
        EXPECT_FALSE(env_.exists("g.lck")) << what;
        take_messages();
        return read;
    }

    /// The file must open again after it was opened for writing and closed.
    void repair(const std::string &bytes, const std::string &what)
    {
        env_["g"] = bytes;
        io_client client(env_);
        int opened = client.request(IO_OPEN_PRIMARY_WRITE, "g");
        expect_code(opened, what);
        if (opened == IO_OK) {
            ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK) << what;
            take_messages();
            ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "g"), IO_OK) << what;
            EXPECT_EQ(take_messages(), "") << what;
        }
        EXPECT_EQ(client.session().primary() != nullptr, env_.exists("g.lck")) << what;
    }

    io_memory_env env_;
    std::string whole_;
    std::string crashed_;
};

TEST_P(Damage, EveryLength)
{
    EXPECT_EQ(exercise(whole_, "whole"), 3);
    EXPECT_EQ(exercise(crashed_, "crashed"), 3);
    int last = 0;
    for (std::size_t length = 0; length <= whole_.size(); length++) {
        std::string what = "length " + std::to_string(length);
        int read = exercise(whole_.substr(0, length), what);
        EXPECT_GE(read, last) << what; // complete datasets stay readable
        last = read;
        repair(whole_.substr(0, length), what);
    }
    EXPECT_EQ(last, 3);
    for (std::size_t length = 36; length <= crashed_.size(); length++) {
        exercise(crashed_.substr(0, length), "crashed, length " + std::to_string(length));
    }
}

TEST_P(Damage, EveryByte)
{
    for (std::size_t at = 0; at < whole_.size(); at++) {
        for (int flip : {0x01, 0x80}) {
            std::string bytes = whole_;
            bytes[at] = static_cast<char>(bytes[at] ^ flip);
            exercise(bytes, "byte " + std::to_string(at) + " by " + std::to_string(flip));
        }
        std::string bytes = whole_;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
        repair(bytes, "byte " + std::to_string(at));
    }
    for (std::size_t at = 0; at < crashed_.size(); at++) {
        std::string bytes = crashed_;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x04);
        exercise(bytes, "crashed, byte " + std::to_string(at));
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Damage, ::testing::Values("F", "u", "u5", "l", "l5"));

} // namespace
