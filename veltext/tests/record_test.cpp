// Records: intact ones are found, wherever the rest is damaged.
#include "veltext/record.h"

#include "veltext/editRecord.h"
#include "veltext/fields.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

using Texts = std::vector<std::string>;

/// The bodies of the intact records, each after its kind.
Texts readAll(std::string_view bytes)
{
    Texts found;
    RecordReader reader(bytes);
    while (const std::optional<Record> record = reader.next()) {
        found.push_back(record->kind + std::string(record->body));
    }
    return found;
}

const std::string three = recordOf('A', "first") + recordOf('B', "") + recordOf('C', "third\n");

TEST(RecordTest, ReadsWhatItWrites)
{
    EXPECT_EQ(readAll(three), (Texts{"Afirst", "B", "Cthird\n"}));
    EXPECT_EQ(readAll(""), Texts());
    const std::string zeros(100, '\0');
    EXPECT_EQ(readAll(recordOf('\0', zeros)), Texts{std::string(101, '\0')});
}

TEST(RecordTest, DistinguishesATornRecordFromADamagedOne)
{
    const std::size_t whole = three.size() - recordOf('C', "third\n").size();
    for (std::size_t size = 0; size < three.size(); ++size) {
        RecordReader reader(std::string_view(three).substr(0, size));
        while (reader.next()) {
        }
        const bool isAtEnd = size == 0 || size == recordOf('A', "first").size() || size == whole;
        EXPECT_EQ(reader.isTorn(), !isAtEnd) << size;
        EXPECT_EQ(reader.skipped() == 0, isAtEnd) << size;
    }
    for (std::size_t place = whole; place < three.size(); ++place) {
        std::string damaged = three;
        damaged[place] = static_cast<char>(damaged[place] ^ 1);
        RecordReader reader(damaged);
        while (reader.next()) {
        }
        EXPECT_EQ(reader.position(), whole) << place;
        EXPECT_EQ(reader.skipped(), three.size() - whole) << place;
        // Only a length that has become larger looks like a record that was cut short.
        EXPECT_EQ(reader.isTorn(), place >= whole + 4 && place < whole + 8) << place;
    }
}

TEST(RecordTest, AFlippedByteLosesOnlyOneRecord)
{
    const Texts all = readAll(three);
    const std::size_t ends[] = {recordOf('A', "first").size(),
                                recordOf('A', "first").size() + recordOf('B', "").size(),
                                three.size()};
    for (std::size_t place = 0; place < three.size(); ++place) {
        for (const int bits : {0x01, 0x2a, 0x80, 0xff}) {
            std::string damaged = three;
            damaged[place] = static_cast<char>(damaged[place] ^ bits);
            Texts expected = all;
            const auto *end = std::upper_bound(std::begin(ends), std::end(ends), place);
            expected.erase(expected.begin() + (end - std::begin(ends)));
            EXPECT_EQ(readAll(damaged), expected) << place << ' ' << bits;
        }
    }
}

TEST(RecordTest, SaysHowMuchIsMissing)
{
    const std::string damaged = "xyz" + three + "rest";
    RecordReader reader(damaged);
    EXPECT_EQ(reader.next()->kind, 'A');
    EXPECT_EQ(reader.skipped(), 3U);
    EXPECT_EQ(reader.next()->kind, 'B');
    EXPECT_EQ(reader.skipped(), 0U);
    EXPECT_EQ(reader.next()->kind, 'C');
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.skipped(), 4U);
    EXPECT_FALSE(reader.isTorn());
}

TEST(RecordTest, FieldsAreReadInTheirOrder)
{
    std::string body;
    putNumber(&body, 0xfffefdfc);
    putLongNumber(&body, 0x0102030405060708);
    putText(&body, "text");
    EXPECT_EQ(body,
              std::string("\xfc\xfd\xfe\xff\x08\x07\x06\x05\x04\x03\x02\x01\x04\0\0\0text", 20));
    FieldReader fields(body);
    EXPECT_EQ(fields.number(), 0xfffefdfcU);
    EXPECT_EQ(fields.longNumber(), 0x0102030405060708U);
    EXPECT_FALSE(fields.isAtEnd());
    EXPECT_EQ(fields.text(), "text");
    EXPECT_TRUE(fields.isAtEnd());
    EXPECT_EQ(fields.number(), 0U);
    EXPECT_FALSE(fields.isGood());
}

TEST(RecordTest, EditsReadBackUnchanged)
{
    const std::vector<Edit> edits = {
        settingValue("/A/x", "2 [m]"),
        addingParameter("/A/y", "1", {"A :"}),
        deletingParameter("/A/x"),
        addingObject("/B:b c", "B : b c\nx = 1\nEND\n"),
        deletingObject("/B:b c"),
        {Edit::Kind::ReplaceObject, "/A", "A :\nEND\n", "A :\nx = \nEND\n", 3, {}, 2},
        {},
    };
    for (const Edit &edit : edits) {
        std::string body;
        putEdit(&body, edit);
        FieldReader fields(body);
        EXPECT_EQ(takeEdit(&fields), edit);
        EXPECT_TRUE(fields.isAtEnd());
        for (std::size_t size = 0; size < body.size(); ++size) {
            FieldReader cut(std::string_view(body).substr(0, size));
            static_cast<void>(takeEdit(&cut));
            EXPECT_FALSE(cut.isGood()) << size;
        }
    }
    FieldReader unknown("\x06");
    static_cast<void>(takeEdit(&unknown));
    EXPECT_FALSE(unknown.isGood());
}

} // namespace
} // namespace veltext
